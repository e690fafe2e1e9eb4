#include "platform/linux/TWLinuxPlaces.h"

#include "builders/TWPrivateMounts.h"
#include "builders/TWTemporaryFolder.h"
#include "platform/linux/TWLinuxFileSystem.h"

#include <gtest/gtest.h>

#include <cstdlib>

// Only these tests read the environment, so nothing is put back.

TEST(TWLinuxPlacesTest, FollowsTheEnvironmentWhereItIsAbsolute)
{
    setenv("HOME", "/some//home/../home/me/", 1);
    setenv("XDG_CONFIG_HOME", "/elsewhere/config/", 1);
    setenv("XDG_DATA_HOME", "relative", 1);
    setenv("XDG_STATE_HOME", "", 1);
    unsetenv("XDG_RUNTIME_DIR");
    const auto places = TWLinuxPlaces();
    EXPECT_EQ(places.home + places.realHomes[0], "/some/home/me/some/home/me");
    EXPECT_EQ(places.settingsFile(), "/elsewhere/config/Tidewell/Tidewell.plist");
    EXPECT_EQ(places.trash + places.stateHome, "/some/home/me/.local/share/Trash/some/home/me/.local/state");
    EXPECT_TRUE(places.runtimeFolder.empty() && !places.sandboxed());
    setenv("TMPDIR", "/proc/self/cwd/..", 1); // a link
    EXPECT_EQ(TWLinuxProblemOfPlaces(TWLinuxFileSystem()).find("The environment variable TMPDIR"), 0U);
    setenv("TMPDIR", "/usr/../tmp/", 1);
    EXPECT_EQ(TWLinuxProblemOfPlaces(TWLinuxFileSystem()), "");
    setenv("HOME", "not/absolute", 1);
    EXPECT_TRUE(TWLinuxPlaces().home.starts_with('/'));
}

TEST(TWLinuxPlacesTest, ASandboxTakesNothingFromTheEnvironment)
{
    for (const auto* name :
        { "HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR", "TMPDIR" })
        setenv(name, "/outside", 1);
    const auto places = TWLinuxSandboxPlaces("/box", TWLinuxPlaces());
    for (const auto& path : { places.home, places.configHome, places.dataHome, places.stateHome, places.cacheHome,
             places.runtimeFolder, places.temporaryFolder, places.systemLogs, places.trash, places.settingsFile() })
        EXPECT_TRUE(path.starts_with("/box/")) << path;
    EXPECT_EQ(places.realHomes[0], "/outside");
    EXPECT_EQ(places.realOwnFolders, (std::vector<std::string>{ "/outside/Tidewell", "/outside/Tidewell" }));
}

TEST(TWLinuxPlacesTest, OutOfAMovedFolderTwoWaysLead)
{
    TWPlaces places;
    places.home = "/home/me";
    places.configHome = "/home/me/.config";
    places.cacheHome = "/big/cache";
    for (const auto* path : { "~/.cache/../Documents", "~/.cache/../cache/x", "~/.cache/x/../../.cache/y" })
        EXPECT_TRUE(places.leavesMovedFolder(path)) << path;
    for (const auto* path : { "~/.cache/x/../y", "~/.cache", "~/.config/../x", "$XDG_CACHE_HOME/../x", "~/.cachex/.." })
        EXPECT_FALSE(places.leavesMovedFolder(path)) << path;
}

TEST(TWLinuxPlacesTest, TheToolSparesAVolumeThatIsMountedOnItsItem)
{
    if (!TWPrivateMounts::begin())
        GTEST_SKIP() << "nothing can be mounted here";
    const TWTemporaryFolder root;
    ASSERT_TRUE(TWPrivateMounts::mountEmpty(root.folder("item")));
    root.write("item/file", "");
    auto command = "cd " + root.path() + " && rm -rf ./item 2>/dev/null";
    for (const auto& option : TWLinuxPlaces().rmOptions)
        command += " " + option;
    EXPECT_TRUE(std::system(command.c_str()) != 0 && root.exists("item/file"));
    EXPECT_TRUE(TWPrivateMounts::detach(root.path("item")));
}
