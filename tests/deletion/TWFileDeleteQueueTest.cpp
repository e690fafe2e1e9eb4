#include "deletion/TWFileDeleteQueue.h"

#include "builders/TWHostileTree.h"
#include "builders/TWPrivateMounts.h"
#include "fakes/TWFakeMachine.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/linux/TWLinuxProcessLauncher.h"

namespace {

class TWFileDeleteQueueTest : public testing::Test, protected TWFakeMachine, protected TWFileDeleteQueueDelegate {
protected:
    TWFileDeleteQueueTest() { renew(tools); }
    void renew(const TWDeletionTools& given)
    {
        queue = std::make_unique<TWFileDeleteQueue>(given);
        queue->setDelegate(this);
    }
    void fileDeleteQueueProgressed(const TWReportLine& line) override
    {
        lines.push_back(launcher.shown(line.text));
        if (line.path.length > 0)
            named.insert(launcher.shown(std::string(line.path.of(line.text))));
    }
    void fileDeleteQueueDone() override { lines.push_back("done"); }
    void fileDeleteQueueVerified(bool nothingLeft) override
    {
        lines.push_back(nothingLeft ? "nothing left" : "something left");
    }
    void addFiles(const Lines& names)
    {
        for (const auto& name : names)
            queue->addFile(target(root.write(name, "x")));
    }
    Lines verify()
    {
        queue->verify();
        runLoop.advance(1s);
        return takeLines();
    }
    Lines run()
    {
        queue->deleteFiles(TWAuthorization::No);
        runLoop.advance(1s);
        return takeLines();
    }
    Lines takeLines() { return std::exchange(lines, {}); }

    std::unique_ptr<TWFileDeleteQueue> queue;
    Lines lines;
    std::set<std::string> named; // the paths that lines carry
};

}

TEST_F(TWFileDeleteQueueTest, DeletesInOrderDuplicatesIncluded)
{
    addFiles({ "b", "a" });
    queue->addFilesFromArray({ target(root.path("b")), target(root.path("never existed")) });
    queue->setSecureDeleteMode(1);
    EXPECT_EQ(run(),
        (Lines{ "7-pass secure delete ROOT/b ...", "7-pass secure delete ROOT/a ...", "7-pass secure delete ROOT/b ...",
            "7-pass secure delete ROOT/never existed ...", "done" }));
    EXPECT_EQ(verify(), Lines{ "nothing left" });
}

TEST_F(TWFileDeleteQueueTest, EachSurvivorIsNamedWithTheReasonsDirectlyBefore)
{
    addFiles({ "kept", "gone" });
    queue->addFile(target(places.home));
    guard.rules(); // as an earlier job has left them
    queue->addFile(target(root.folder("home/.local/share/Tidewell")));
    queue->addFile(target(root.link("dangling", "nowhere")));
    queue->addFile(TWDeletionTarget::make({}, "relative"));
    using Kind = TWTermination::Kind;
    launcher.failures[root.path("kept")] = { Kind::Exited, 1, "rm: cannot remove\nrm: second line\n" };
    launcher.failures[root.path("dangling")] = { Kind::NotLaunched, ENOENT, "" };
    run();
    named.clear();
    const Lines expected{ "The deletion tool said: rm: cannot remove", "The deletion tool said: rm: second line",
        "Could not delete ROOT/kept", "Refused to delete \"ROOT/home\": it is the home folder.",
        "Could not delete ROOT/home",
        "Refused to delete \"ROOT/home/.local/share/Tidewell\": it is the folder where Tidewell keeps its settings.",
        "Could not delete ROOT/home/.local/share/Tidewell",
        "The deletion tool /bin/rm could not be started (No such file or directory). Please install Tidewell and "
        "the package coreutils again.",
        "Could not delete ROOT/dangling",
        "Refused to delete \"relative\": the path does not begin with \"/\" or \"~\".", "Could not delete relative",
        "something left" };
    EXPECT_EQ(verify(), expected);
    EXPECT_EQ(verify(), expected) << "a second check starts afresh";
    EXPECT_TRUE(queue->isGone(1) && !queue->isGone(0));
    EXPECT_EQ(
        named, (std::set<std::string>{ "ROOT/dangling", "ROOT/home", "ROOT/home/.local/share/Tidewell", "ROOT/kept" }));
}

TEST_F(TWFileDeleteQueueTest, AnOverwritingToolThatFailedIsNotTrusted)
{
    using Kind = TWTermination::Kind;
    addFiles({ "noted", "killed", "failed" });
    queue->setSecureDeleteMode(0);
    launcher.failures[root.path("noted")] = { Kind::Exited, 0, "srm: note: ./noted: has several names\n" };
    launcher.failures[root.path("killed")] = { Kind::Signalled, 9, "" };
    launcher.failures[root.path("failed")] = { Kind::Exited, 1, "srm: note: a\nsrm: ./failed: why\n" };
    run();
    for (const auto* name : { "noted", "killed", "failed" })
        std::filesystem::remove(root.path(name)); // as if it had got another name
    EXPECT_EQ(verify(),
        (Lines{ "The deletion tool said: srm: note: ./noted: has several names",
            "The deletion tool /libexec/srm was ended by signal 9.", "Could not delete ROOT/killed",
            "The deletion tool said: srm: ./failed: why", "The deletion tool said: srm: note: a",
            "Could not delete ROOT/failed", "something left" }));
}

// Whatever becomes of the folder between the plan and the child, nothing outside of it is touched and nothing is called
// gone.
TEST_F(TWFileDeleteQueueTest, OnlyTheFolderThatWasPlannedIsTouched)
{
    const auto swapFor = [this](const std::string& what) {
        std::filesystem::rename(root.path("folder"), root.path("away"));
        if (what == "link")
            root.link("folder", "other");
        else if (what == "folder")
            root.write("folder/2", "another one");
    };
    const std::string gone
        = "\"ROOT/folder/2\" cannot be looked at, because its folder was moved or deleted meanwhile.";
    const std::string changed
        = "\"ROOT/folder/2\" was left alone, because its folder is another one than when it was looked at.";
    const auto notOpened = [](const std::string& why) {
        return "\"ROOT/folder/2\" was left alone, because its folder cannot be opened any more (" + why + ").";
    };
    const std::vector<std::tuple<std::string, std::size_t, std::string>> cases{
        { "link", 1, notOpened("Not a directory") },
        { "folder", 1, changed },
        { "nothing", 1, notOpened("No such file or directory") },
        { "link", 2, gone },
        { "folder", 2,
            "\"ROOT/folder/2\" cannot be looked at, because its folder was replaced by another one meanwhile." },
        { "nothing", 2, gone },
    };
    for (const auto& [what, launches, reason] : cases) {
        renew(tools);
        addFiles({ "folder/1", "folder/2" });
        if (launches == 1)
            queue->addFile(target(root.path("folder"))); // its deletion does not excuse what had left before
        root.write("other/2", "canary");
        std::size_t launched = 0;
        launcher.atLaunch = [&, when = launches, swap = what] {
            if (++launched == when)
                swapFor(swap);
        };
        run();
        const auto said = verify();
        ASSERT_GE(said.size(), 3U) << what << launches;
        EXPECT_EQ(
            Lines(said.end() - 3, said.end()), (Lines{ reason, "Could not delete ROOT/folder/2", "something left" }))
            << what << launches;
        EXPECT_EQ(root.read("other/2"), "canary");
        EXPECT_EQ(root.exists("away/2"), launches == 1) << "the tool works in the folder that was planned";
        for (const auto* name : { "folder", "away" })
            std::filesystem::remove_all(root.path(name));
    }
}

TEST_F(TWFileDeleteQueueTest, APathInsideAnotherOneOfTheListGoesWithIt)
{
    addFiles({ "outer/inner/file", "outer/inner/deep/file" });
    queue->addFile(target(root.path("outer")));
    root.write("elsewhere/file", "x");
    queue->addFile(target(root.path("elsewhere/file")));
    run();
    std::filesystem::rename(root.path("elsewhere"), root.path("moved"));
    EXPECT_EQ(verify(),
        (Lines{ "\"ROOT/elsewhere/file\" cannot be looked at, because its folder was moved or deleted meanwhile.",
            "Could not delete ROOT/elsewhere/file", "something left" }));
}

TEST_F(TWFileDeleteQueueTest, AVolumeThatIsMountedDuringTheJobStays)
{
    addFiles({ "first", "folder/volume/data" });
    for (const auto* name : { "folder/volume", "folder" })
        queue->addFile(target(root.path(name)));
    launcher.atLaunch = [this] { mountTable.points.push_back(root.path("folder/volume")); };
    launcher.failures[root.path("folder/volume/data")] = { TWTermination::Kind::Exited, 1, "rm: busy" };
    run();
    EXPECT_EQ(launcher.records.size(), 2U) << "neither the volume nor the folder above it";
    EXPECT_TRUE(root.exists("folder/volume/data"));
}

TEST_F(TWFileDeleteQueueTest, AVolumeThatIsUnmountedDuringTheJobIsNoSuccess)
{
    const auto volume = root.folder("volume");
    if (!TWPrivateMounts::begin() || !TWPrivateMounts::mountEmpty(volume))
        GTEST_SKIP() << "nothing can be mounted here";
    addFiles({ "volume/folder/1", "volume/folder/2", "volume/folder/3" });
    std::size_t launches = 0;
    launcher.atLaunch = [&] {
        if (++launches == 2)
            TWPrivateMounts::detach(volume);
    };
    run();
    EXPECT_EQ(launches, 2U);
    EXPECT_EQ(verify().back(), "something left");
}

// So long that it is checked on several threads.
TEST_F(TWFileDeleteQueueTest, EverySurvivorOfALongListIsNamed)
{
    launcher.deletes = false;
    for (const auto* left : { "0", "1499", "1500", "2999" })
        root.write(left, "x");
    for (int number = 0; number < 3000; ++number)
        queue->addFile(target(root.path(std::to_string(number))));
    run();
    runLoop.advance(10s);
    takeLines();
    EXPECT_EQ(verify(),
        (Lines{ "Could not delete ROOT/0", "Could not delete ROOT/1499", "Could not delete ROOT/1500",
            "Could not delete ROOT/2999", "something left" }));
}

TEST_F(TWFileDeleteQueueTest, StopStartsNothingFurtherAndCountsTheRest)
{
    launcher.ending = TWRecordingLauncher::Ending::ByTest;
    addFiles({ "1", "2", "3", "4" });
    queue->deleteFiles(TWAuthorization::No);
    queue->deleteFiles(TWAuthorization::Yes); // while running: nothing but the flag
    launcher.endAll();
    queue->stop();
    EXPECT_TRUE(queue->running()) << "until the child has ended";
    runLoop.advance(1s);
    EXPECT_EQ(takeLines(), (Lines{ "Delete ROOT/1 ...", "Delete ROOT/2 ...", "done" }));
    EXPECT_EQ(verify(),
        (Lines{ "The deletion tool /bin/rm was ended by signal 15.", "Could not delete ROOT/2",
            "Stopped: 2 items were not deleted.", "something left" }));
    EXPECT_FALSE(queue->running());
    renew(tools);
    addFiles({ "5" });
    launcher.ending = TWRecordingLauncher::Ending::OnALaterTurn;
    run();
    EXPECT_EQ(verify(), Lines{ "nothing left" });
    for (int check = 0; check < 2; ++check) {
        queue->verify();
        queue->stop();
        runLoop.advance(1s);
        EXPECT_EQ(
            takeLines(), (Lines{ "Stopped: what was deleted could not be checked to the end.", "something left" }));
        EXPECT_FALSE(queue->isGone(0));
    }
}

// The whole way, with the real tool: everything goes but what the user may not delete, and that is named.
TEST_F(TWFileDeleteQueueTest, TheRealToolDeletesTheHostileTreeAndNothingElse)
{
    const TWHostileTree tree(root);
    const auto canary = tree.canaryDigest();
    places.rmOptions = TWLinuxPlaces().rmOptions;
    TWLinuxProcessLauncher realLauncher(runLoop);
    TWDeletionTools realTools{ runLoop, realLauncher, fileSystem, guard, places };
    renew(realTools);
    std::vector<std::filesystem::path> items;
    for (const auto& entry : std::filesystem::directory_iterator(tree.path())) {
        items.push_back(entry.path());
        queue->addFile(target(entry.path()));
    }
    EXPECT_EQ(items.size(), 18U);
    queue->deleteFiles(TWAuthorization::No);
    runLoop.runUntil([&] { return !queue->running(); });
    EXPECT_EQ(tree.canaryDigest(), canary);
    Lines expected;
    for (const auto& item : items) {
        if (std::filesystem::exists(std::filesystem::symlink_status(item)))
            expected.push_back(launcher.shown("Could not delete " + item.string()));
    }
    EXPECT_LE(expected.size(), geteuid() == 0 ? 0U : 2U) << "only the two locked folders may resist";
    expected.emplace_back(expected.empty() ? "nothing left" : "something left");
    takeLines();
    auto said = verify();
    std::erase_if(said, [](const auto& line) { return line.starts_with("The deletion tool said: "); });
    EXPECT_EQ(said, expected);
    queue.reset();
}
