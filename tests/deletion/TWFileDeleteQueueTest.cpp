#include "deletion/TWFileDeleteQueue.h"

#include "builders/TWHostileTree.h"
#include "fakes/TWFakeDeletion.h"

#include <functional>

using namespace std::chrono_literals;

namespace {

using Lines = std::vector<std::string>;

class TWFileDeleteQueueTest : public testing::Test, protected TWFakeDeletion, protected TWFileDeleteQueueDelegate {
protected:
    TWFileDeleteQueueTest() { renew(); }
    void renew(TWFileDeleteQueue::Announcing announcing = TWFileDeleteQueue::Announcing::EveryPath)
    {
        queue = std::make_unique<TWFileDeleteQueue>(tools, announcing);
        queue->setDelegate(this);
    }
    void fileDeleteQueueProgressed(const std::string& message) override
    {
        lines.push_back(launcher.shown(message));
        onProgress();
    }
    void fileDeleteQueueDone() override
    {
        lines.emplace_back("done");
        onDone();
    }
    void addFiles(const Lines& names)
    {
        for (const auto& name : names)
            queue->addFile(root.write(name, "x"));
    }
    void run()
    {
        queue->deleteFiles(TWAuthorization::No);
        runLoop.advance(1s);
    }
    Lines takeLines() { return std::exchange(lines, {}); }

    std::unique_ptr<TWFileDeleteQueue> queue;
    Lines lines;
    std::function<void()> onProgress = [] { };
    std::function<void()> onDone = [] { };
};

}

TEST_F(TWFileDeleteQueueTest, DeletesInOrderDuplicatesIncluded)
{
    addFiles({"b", "a"});
    queue->addFilesFromArray({root.path("b"), root.path("never existed")});
    queue->setSecureDeleteMode(1);
    run();
    EXPECT_EQ(takeLines(),
        (Lines {"7-pass secure delete ROOT/b ...", "7-pass secure delete ROOT/a ...", "7-pass secure delete ROOT/b ...",
            "7-pass secure delete ROOT/never existed ...", "done"}));
    EXPECT_TRUE(queue->verify());
    EXPECT_EQ(takeLines(), Lines());
}

TEST_F(TWFileDeleteQueueTest, AnEmptyQueueIsDoneAtOnce)
{
    queue->deleteFiles(TWAuthorization::No);
    EXPECT_EQ(takeLines(), Lines {"done"});
    EXPECT_TRUE(queue->verify());
    EXPECT_FALSE(queue->running());
}

TEST_F(TWFileDeleteQueueTest, EachSurvivorIsNamedWithTheReasonDirectlyBefore)
{
    addFiles({"kept", "gone", "silent"});
    queue->addFile(places.home);
    queue->addFile(root.link("dangling", "nowhere"));
    launcher.failures[root.path("kept")] = {TWTermination::Kind::Exited, 1, "rm: cannot remove\n"};
    launcher.failures[root.path("silent")] = {TWTermination::Kind::Exited, 1, ""};
    launcher.failures[root.path("dangling")] = {TWTermination::Kind::Exited, 1, ""};
    run();
    takeLines();
    EXPECT_FALSE(queue->verify());
    EXPECT_EQ(takeLines(),
        (Lines {"The deletion tool said: rm: cannot remove", "Could not delete ROOT/kept", "Could not delete ROOT/silent",
            "Refused to delete \"ROOT/home\": it is the home folder.", "Could not delete ROOT/home",
            "Could not delete ROOT/dangling"}));
    EXPECT_FALSE(root.exists("gone"));
}

TEST_F(TWFileDeleteQueueTest, TerminateCutsShortOnlyThePathInProgress)
{
    launcher.ending = TWRecordingLauncher::Ending::ByTest;
    addFiles({"1", "2", "3"});
    queue->deleteFiles(TWAuthorization::No);
    queue->deleteFiles(TWAuthorization::Yes); // while running: nothing but the flag
    queue->terminate();
    launcher.ending = TWRecordingLauncher::Ending::OnALaterTurn;
    runLoop.advance(1s);
    EXPECT_EQ(takeLines(), (Lines {"Delete ROOT/1 ...", "Delete ROOT/2 ...", "Delete ROOT/3 ...", "done"}));
    EXPECT_FALSE(queue->verify());
    EXPECT_EQ(takeLines(), (Lines {"The deletion tool /bin/rm was ended by signal 15.", "Could not delete ROOT/1"}));
}

TEST_F(TWFileDeleteQueueTest, StopStartsNothingFurtherAndCountsTheRest)
{
    launcher.ending = TWRecordingLauncher::Ending::ByTest;
    addFiles({"1", "2", "3", "4"});
    queue->deleteFiles(TWAuthorization::No);
    launcher.endAll();
    queue->stop();
    EXPECT_TRUE(queue->running()) << "until the child has ended";
    runLoop.advance(1s);
    EXPECT_EQ(takeLines(), (Lines {"Delete ROOT/1 ...", "Delete ROOT/2 ...", "done"}));
    EXPECT_FALSE(queue->verify());
    EXPECT_EQ(takeLines(),
        (Lines {"The deletion tool /bin/rm was ended by signal 15.", "Could not delete ROOT/2", "Stopped: 2 items were not deleted."}));
    EXPECT_FALSE(queue->running());
}

TEST_F(TWFileDeleteQueueTest, MayBeDestroyedInEveryOneOfItsCalls)
{
    const auto build = [&] {
        renew();
        addFiles({"1", "2"});
        onProgress = onDone = [] { };
    };
    const auto destroy = [&] { queue.reset(); };
    build();
    onProgress = destroy;
    run();
    EXPECT_EQ(takeLines(), Lines {"Delete ROOT/1 ..."});
    build();
    onDone = destroy;
    run();
    EXPECT_EQ(takeLines(), (Lines {"Delete ROOT/1 ...", "Delete ROOT/2 ...", "done"}));
    build();
    launcher.deletes = false;
    run();
    takeLines();
    onProgress = destroy;
    queue->verify();
    EXPECT_EQ(takeLines(), Lines {"Could not delete ROOT/1"});
}

TEST_F(TWFileDeleteQueueTest, AQuietQueueSpeaksOnlyOfWhatIsLeft)
{
    renew(TWFileDeleteQueue::Announcing::OnlyWhatIsLeft);
    addFiles({"1"});
    launcher.deletes = false;
    run();
    queue->verify();
    EXPECT_EQ(takeLines(), (Lines {"done", "Could not delete ROOT/1"}));
}
