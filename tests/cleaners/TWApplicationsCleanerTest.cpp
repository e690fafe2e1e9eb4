#include "cleaners/TWApplicationsCleaner.h"

#include "fakes/TWRecordingCleanerDelegate.h"

namespace {

class TWApplicationsCleanerTest : public TWCleanerTest<TWApplicationsCleaner> {
protected:
    static constexpr auto Started = "started: Quitting applications...";
    static constexpr auto Success = "success: All applications were quit.";
    static constexpr auto Failure = "failure: Some applications could not be quit!";

    void list(std::vector<TWApplicationsRecord> records, std::int32_t timeout, bool forceQuit = false)
    {
        cleaner.setInfo(
            { std::make_shared<std::vector<TWApplicationsRecord>>(std::move(records)), forceQuit, timeout, {} });
    }
    void start(const std::string& path, std::int64_t process) const
    {
        workspace.copies.push_back({ path, process, static_cast<std::uint64_t>(100 + process), 0 });
    }
    Lines requests() const { return std::exchange(workspace.requests, {}); }

    const TWApplicationsRecord mail{ "/apps/mail.desktop", "Mail" };
};

TEST_F(TWApplicationsCleanerTest, EachRunningCopyIsAskedAndTheFirstTickWithoutAnyEndsTheJob)
{
    list({ mail, { "/apps/none.desktop", "None" }, { "~/tool", "" }, mail, { "tool", "Relative" } }, 5);
    start("tool", 9);
    start("/apps/mail.desktop", 10);
    start("/apps/other.desktop", 11);
    start(places.home + "/tool", 12);
    start("/apps/mail.desktop", 13);
    cleaner.clean();
    runLoop.advance(99ms);
    EXPECT_EQ(reports.take(),
        (Lines{ Started, "- Quitting Mail...", "- Quitting Mail...", "- Quitting tool...", "- Quitting Mail...",
            "- Quitting Mail..." }));
    EXPECT_EQ(requests(), (Lines{ "quit 10", "quit 13", "quit 12", "quit 10", "quit 13" }));
    runLoop.advance(1ms);
    EXPECT_EQ(reports.take(), (Lines{ Success, "finished" }));
    EXPECT_EQ(run(), (Lines{ Started, Success, "finished" })) << "nothing listed runs";
}

TEST_F(TWApplicationsCleanerTest, WhatStillRunsAfterTheTimeoutIsReportedOrEnded)
{
    workspace.stubborn = { 10, 11 };
    start("/apps/mail.desktop", 10);
    start("/apps/mail.desktop", 11);
    start("/apps/mail.desktop", 12);
    list({ mail }, 2);
    cleaner.clean();
    runLoop.advance(2s);
    EXPECT_EQ(reports.count("finished"), 0U) << "the time-out itself still waits";
    reports.take();
    runLoop.advance(100ms);
    EXPECT_EQ(reports.take(),
        (Lines{ "- Mail could not be terminated!", "- Mail could not be terminated!", Failure, "finished" }));
    EXPECT_EQ(cleaner.outcome().text(), "1 application was quit. 2 applications were still running.");

    list({ mail, { "/apps/late.desktop", "Late" } }, 0, true);
    requests();
    // What starts while others are being quit, even for the first time, is running all the same.
    cleaner.clean();
    runLoop.advance(50ms);
    start("/apps/mail.desktop", 20);
    start("/apps/late.desktop", 21);
    runLoop.advance(1s);
    EXPECT_EQ(reports.take(),
        (Lines{ Started, "- Quitting Mail...", "- Quitting Mail...", "- Mail was force quit.", "- Mail was force quit.",
            "- Mail was force quit.", "- Late was force quit.", Success, "finished" }));
    EXPECT_EQ(requests(), (Lines{ "quit 10", "quit 11", "force 10", "force 11", "force 20", "force 21" }));
}

TEST_F(TWApplicationsCleanerTest, AFrozenPlanQuitsOnlyTheTickedProcessesThatItShowed)
{
    for (const int process : { 10, 11, 12 })
        start("/apps/mail.desktop", process);
    list({ mail }, 1, true);
    TWPlannedJob job;
    job.plan = std::make_shared<const TWPlan>(TWPlanOf(cleaner, runLoop));
    ASSERT_EQ(job.plan->items.size(), 3U);
    EXPECT_EQ(job.plan->thing(job.plan->items[0])->which, "process 10");
    job.unticked = { false, true, false };
    job.check = std::make_shared<TWPreviewCheck>();
    workspace.copies[2].start = 999; // the identifier belongs to another process now
    start("/apps/mail.desktop", 13);
    cleaner.carryOut(job);
    runLoop.advance(5s);
    EXPECT_EQ(requests(), (Lines{ "quit 10" }));
    EXPECT_EQ(reports.take(),
        (Lines{ Started, "- Mail (process 12) has ended since the preview.", "- Quitting Mail...",
            std::string("success: ") + TWPreviewSuccessMessage, "finished" }));
}

TEST_F(TWApplicationsCleanerTest, WhatCannotBeLookedAtIsNoSuccess)
{
    start("/apps/mail.desktop", 10);
    workspace.stubborn = { 10 };
    workspace.answers = false;
    list({ mail }, 5);
    cleaner.clean();
    runLoop.advance(1s);
    EXPECT_EQ(reports.take(),
        (Lines{ Started,
            "- Mail (process 10) may not have been asked to quit: its windows or the message bus could not be reached.",
            "- Quitting Mail..." }));
    workspace.canLook = false;
    runLoop.advance(100ms);
    EXPECT_EQ(reports.take().back(), "finished");
    EXPECT_EQ(cleaner.failureMessageString(), "Some applications could not be quit!");
    EXPECT_EQ(run()[1], "- The running applications could not be listed, so nobody knows which of them run.");
    EXPECT_EQ(requests(), (Lines{ "quit 10" }));
    list({}, 5);
    EXPECT_TRUE(cleaner.validate().starts_with("The Quit Applications cleaner is checked but no applications"));
    cleaner.setIsActive(false);
    EXPECT_EQ(cleaner.validate(), "");
}

}
