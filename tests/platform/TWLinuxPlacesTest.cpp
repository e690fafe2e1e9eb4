#include "platform/linux/TWLinuxPlaces.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

namespace {

class TWLinuxPlacesTest : public testing::Test {
protected:
    void set(const std::string& name, const std::optional<std::string>& value)
    {
        const char* now = std::getenv(name.c_str());
        before_.try_emplace(name, now ? std::optional<std::string>(now) : std::nullopt);
        value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }
    void TearDown() override
    {
        for (const auto& [name, value] : std::map(before_))
            set(name, value);
    }

private:
    std::map<std::string, std::optional<std::string>> before_;
};

}

TEST_F(TWLinuxPlacesTest, FollowsTheEnvironmentWhereItIsAbsolute)
{
    set("HOME", "/some//home/../home/me/");
    set("XDG_CONFIG_HOME", "/elsewhere/config/");
    set("XDG_DATA_HOME", "relative");
    set("XDG_STATE_HOME", "");
    set("XDG_RUNTIME_DIR", std::nullopt);
    const auto places = TWLinuxPlaces();
    EXPECT_EQ(places.home + places.realHome, "/some/home/me/some/home/me");
    EXPECT_EQ(places.settingsFile(), "/elsewhere/config/Tidewell/Tidewell.plist");
    EXPECT_EQ(places.trash + places.stateHome, "/some/home/me/.local/share/Trash/some/home/me/.local/state");
    EXPECT_TRUE(places.runtimeFolder.empty() && !places.sandboxed());
    set("HOME", "not/absolute");
    EXPECT_TRUE(TWLinuxPlaces().home.starts_with('/'));
}

TEST_F(TWLinuxPlacesTest, ASandboxTakesNothingFromTheEnvironment)
{
    for (const auto* name :
        { "HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR", "TMPDIR" })
        set(name, "/outside");
    const auto places = TWLinuxSandboxPlaces("/box");
    for (const auto& path : { places.home, places.configHome, places.dataHome, places.stateHome, places.cacheHome,
             places.runtimeFolder, places.temporaryFolder, places.systemLogs, places.trash, places.settingsFile() })
        EXPECT_TRUE(path.starts_with("/box/")) << path;
    EXPECT_EQ(places.realHome, "/outside");
}
