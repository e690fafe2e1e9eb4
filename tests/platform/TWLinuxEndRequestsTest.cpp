#include "platform/linux/TWLinuxEndRequests.h"

#include "fakes/TWFakeRunLoop.h"

#include <csignal>

TEST(TWLinuxEndRequestsTest, RequestsToEndBecomeEventsUnlessTheyAreIgnored)
{
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    const auto hangup = std::signal(SIGHUP, SIG_IGN); // as nohup does
    for (const int signal : { SIGINT, SIGTERM })
        std::signal(signal, SIG_DFL); // a shell makes its background children ignore SIGINT
    TWFakeRunLoop runLoop;
    int requests = 0;
    TWLinuxEndRequests::hold();
    const TWLinuxEndRequests watching(
        runLoop, [&] { ++requests; }, 60'000);
    for (const int signal : { SIGHUP, SIGTERM, SIGINT }) {
        raise(signal);
        runLoop.runUntilIdle();
    }
    EXPECT_EQ(requests, 2);
    std::signal(SIGHUP, hangup);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(TWLinuxEndRequestsTest, AProcessWhoseMainThreadHangsIsEnded)
{
    const auto hang = [] {
        TWLinuxEndRequests::hold();
        TWFakeRunLoop runLoop;
        const TWLinuxEndRequests watching(
            runLoop, [] {}, 10);
        kill(getpid(), SIGTERM);
        std::this_thread::sleep_for(std::chrono::seconds(30));
    };
    EXPECT_EXIT(hang(), testing::ExitedWithCode(130), "");
}
