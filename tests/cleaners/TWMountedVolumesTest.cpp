#include "builders/TWPrivateMounts.h"
#include "cleaners/TWFilesCleaner.h"
#include "fakes/TWFakeMachine.h"
#include "fakes/TWRecordingCleanerDelegate.h"
#include "platform/linux/TWLinuxMountTable.h"

using namespace std::chrono_literals;

namespace {

using Lines = std::vector<std::string>;

// The Files cleaner on real mounts, which are read from the real mount table.
class TWMountedVolumesTest : public testing::Test, protected TWFakeMachine {
protected:
    void SetUp() override
    {
        if (!TWPrivateMounts::begin())
            GTEST_SKIP() << "nothing can be mounted here";
        const auto volume = root.folder("volume");
        ASSERT_TRUE(TWPrivateMounts::mountEmpty(volume));
        realTable = std::make_unique<TWLinuxMountTable>();
        realGuard = std::make_unique<TWDeletionGuard>(places, fileSystem, *realTable, dataFolder);
    }
    void TearDown() override { TWPrivateMounts::detach(root.path("volume")); }

    Lines clean(const std::vector<std::pair<std::string, TWWhatToDelete>>& rules)
    {
        TWFilesCleaner cleaner({ { runLoop, launcher, fileSystem, *realGuard, places }, settings });
        TWRecordingCleanerDelegate reports;
        cleaner.setDelegate(&reports);
        TWFilesCleanerInfo info;
        info.filesArray = std::make_shared<std::vector<TWFilesRule>>();
        for (const auto& [path, what] : rules)
            info.filesArray->push_back({ true, "", root.path(path), what });
        cleaner.setInfo(info);
        cleaner.clean();
        runLoop.advance(1s);
        return reports.take();
    }

    TWSettings settings{ userDefaults };
    std::unique_ptr<TWLinuxMountTable> realTable;
    std::unique_ptr<TWDeletionGuard> realGuard;
};

constexpr auto Failure = "failure: Some files and/or folders could not be deleted!";

}

TEST_F(TWMountedVolumesTest, AVolumeThatIsUnmountedInTheMiddleIsNoSuccess)
{
    for (const auto* name : { "a", "b", "c" })
        root.write(std::string("volume/folder/") + name, "x");
    std::size_t launches = 0;
    launcher.atLaunch = [&] {
        if (++launches == 2) {
            EXPECT_TRUE(TWPrivateMounts::detach(root.path("volume")));
        }
    };
    const auto said = clean({ { "volume/folder", TWFolderContents } });
    EXPECT_EQ(launches, 2U);
    EXPECT_EQ(Lines(said.end() - 2, said.end()), (Lines{ Failure, "finished" }));
}

TEST_F(TWMountedVolumesTest, NoWayLeadsAroundTheGuard)
{
    const auto kept = root.write("home/kept", "x");
    root.write("volume/data", "x");
    const auto alias = root.folder("outside/alias");
    ASSERT_TRUE(TWPrivateMounts::bind(root.path(), alias));
    root.link("link", ".");
    root.folder("deep/below");
    root.link("jump", "deep/below");
    root.write("other/inside", "x");
    const auto later = root.folder("other/later");
    const auto said = clean({ { "outside/alias/home", TWItemItself }, { "link/home", TWItemItself },
        { "other/../home", TWItemItself }, { "jump/../../home", TWItemItself }, { "outside", TWItemItself },
        { "volume", TWItemItself }, { "outside/alias", TWItemItself } });
    EXPECT_EQ(launcher.records, Lines());
    EXPECT_TRUE(std::filesystem::exists(kept) && root.exists("volume/data"));
    EXPECT_EQ(Lines(said.end() - 2, said.end()), (Lines{ Failure, "finished" }));
    // A volume that appears between the plan and the child stays.
    launcher.atLaunch = [&] { EXPECT_TRUE(TWPrivateMounts::mountEmpty(later)); };
    EXPECT_EQ(clean({ { "other/inside", TWItemItself }, { "other", TWItemItself } }).back(), "finished");
    EXPECT_EQ(launcher.records.size(), 1U) << "the folder of the new volume is refused";
    TWPrivateMounts::detach(later);
    TWPrivateMounts::detach(alias);
}
