#include "deletion/TWFileDeleteQueue.h"

#include "fakes/TWFakeMachine.h"

#include <cerrno>
#include <functional>

using namespace std::chrono_literals;

namespace {

using Lines = std::vector<std::string>;

class TWFileDeleteQueueTest : public testing::Test, protected TWFakeMachine, protected TWFileDeleteQueueDelegate {
protected:
    TWFileDeleteQueueTest() { renew(); }
    void renew()
    {
        queue = std::make_unique<TWFileDeleteQueue>(tools);
        queue->setDelegate(this);
    }
    void fileDeleteQueueProgressed(const std::string& message) override
    {
        lines.push_back(launcher.shown(message));
        onCall();
    }
    void fileDeleteQueueDone() override
    {
        lines.emplace_back("done");
        onCall();
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
    std::function<void()> onCall = [] {};
};

}

TEST_F(TWFileDeleteQueueTest, DeletesInOrderDuplicatesIncluded)
{
    addFiles({ "b", "a" });
    queue->addFilesFromArray({ root.path("b"), root.path("never existed") });
    queue->setSecureDeleteMode(1);
    run();
    EXPECT_EQ(takeLines(),
        (Lines{ "7-pass secure delete ROOT/b ...", "7-pass secure delete ROOT/a ...", "7-pass secure delete ROOT/b ...",
            "7-pass secure delete ROOT/never existed ...", "done" }));
    EXPECT_TRUE(queue->verify());
    renew();
    queue->deleteFiles(TWAuthorization::No);
    EXPECT_EQ(takeLines(), Lines{ "done" }) << "an empty queue is done at once, without a line";
    EXPECT_TRUE(queue->verify());
}

TEST_F(TWFileDeleteQueueTest, EachSurvivorIsNamedWithTheReasonDirectlyBefore)
{
    addFiles({ "kept", "gone", "silent" });
    queue->addFile(places.home);
    queue->addFile(root.link("dangling", "nowhere"));
    using Kind = TWTermination::Kind;
    launcher.failures[root.path("kept")] = { Kind::Exited, 1, "rm: cannot remove\nrm: second line" };
    launcher.failures[root.path("silent")] = { Kind::Exited, 1, "" };
    launcher.failures[root.path("dangling")] = { Kind::NotLaunched, ENOENT, "" };
    run();
    takeLines();
    EXPECT_FALSE(queue->verify());
    EXPECT_EQ(takeLines(),
        (Lines{ "The deletion tool said: rm: cannot remove", "Could not delete ROOT/kept",
            "Could not delete ROOT/silent", "Refused to delete \"ROOT/home\": it is the home folder.",
            "Could not delete ROOT/home",
            "The deletion tool /bin/rm could not be started (No such file or directory). Please install Tidewell and "
            "the package "
            "coreutils again.",
            "Could not delete ROOT/dangling" }));
    EXPECT_FALSE(root.exists("gone"));
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
    EXPECT_FALSE(queue->verify());
    EXPECT_EQ(takeLines(),
        (Lines{ "The deletion tool /bin/rm was ended by signal 15.", "Could not delete ROOT/2",
            "Stopped: 2 items were not deleted." }));
    EXPECT_FALSE(queue->running());
}

TEST_F(TWFileDeleteQueueTest, MayBeDestroyedInEveryOneOfItsCalls)
{
    launcher.deletes = false;
    const Lines all{ "Delete ROOT/home ...", "Delete ROOT/1 ...", "Delete ROOT/2 ...", "done",
        "Refused to delete \"ROOT/home\": it is the home folder.", "Could not delete ROOT/home",
        "Could not delete ROOT/1" };
    for (std::size_t calls = 1; calls < all.size(); ++calls) {
        renew();
        queue->addFile(places.home);
        addFiles({ "1", "2" });
        onCall = [&] {
            if (lines.size() == calls)
                queue.reset();
        };
        run();
        if (queue)
            queue->verify();
        EXPECT_EQ(takeLines(), Lines(all.begin(), all.begin() + std::ptrdiff_t(calls)));
    }
}
