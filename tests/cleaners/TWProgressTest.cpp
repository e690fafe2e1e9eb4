#include "cleaners/TWTrashCleaner.h"

#include "fakes/TWFakeMachine.h"
#include "fakes/TWRecordingCleanerDelegate.h"

#include <gtest/gtest.h>

TEST(TWProgressTest, TextsSayNoMoreThanIsKnown)
{
    const std::pair<TWProgress, std::string> rows[] = {
        { {}, "" },
        { { 1200, 0, 0, 0, false, false }, "1,200 found" },
        { { 90, 41, 7'000'000'000, 3'100'000'000, true, false }, "41 of 90, about 15 s" },
        { { 90, 41, 7'000'000'000, 3'100'000'000, true, true }, "41 of 90, 3.1 of 7.0 GB, about 15 s" },
        { { 2, 1, 7'000'000'000, 900'000'000, true, true }, "1 of 2, 900 MB of 7.0 GB, about 25 s" },
        { { 2, 2, 5, 5, true, true }, "2 of 2, 5 of 5 bytes" },
        { { 1000, 0, 0, 0, true, false }, "0 of 1,000" },
        { { 100, 2, 0, 0, true, false }, "2 of 100, about 9 min" },
        { { 4, 1, 0, 0, true, false, true }, "waiting for 3 of 4" },
    };
    for (const auto& [progress, text] : rows)
        EXPECT_EQ(progress.text(10s), text);
    EXPECT_EQ((TWProgress{ 2, 1, 0, 0, true, false }.text(1s)), "1 of 2") << "too early to tell";

    TWOutcome outcome;
    EXPECT_EQ(outcome.text(), "Nothing was deleted.");
    outcome += TWOutcome{ 0, 2, 0, 0, false, false, {} };
    outcome += TWOutcome{ 3, 0, 31'200'000, 0, true, false, {} };
    EXPECT_EQ(outcome.text(), "Freed 31.2 MB. 2 items stayed.");
    outcome += TWOutcome{ 1, 0, 0, 0, false, false, {} };
    EXPECT_EQ(outcome.text(), "Freed at least 31.2 MB. 2 items stayed.");
    TWOutcome quit;
    quit.others = "2 applications were quit.";
    EXPECT_EQ(quit.text(), quit.others);
    outcome += quit;
    EXPECT_EQ(outcome.text(), "Freed at least 31.2 MB. 2 items stayed. 2 applications were quit.");
    EXPECT_EQ((TWOutcome{ 1, 1, 0, 2, true, false, {} }.text()),
        "Deleted 1 item. 1 item stayed. 2 cleaners were not started.");
}

using TWMeasuredJobTest = TWCleanerTest<TWTrashCleaner>;

TEST_F(TWMeasuredJobTest, CountsOnlyWhatIsGoneAndCanBeStoppedAtOnce)
{
    const auto fill = [this] {
        for (const auto* file : { "a/inside", "b", "c" })
            root.write(std::string("home/.local/share/Trash/files/") + file, "text");
    };
    fill();
    launcher.failures[root.path("home/.local/share/Trash/files/b")] = { TWTermination::Kind::Exited, 1, "" };
    std::uint64_t done = 0;
    reports.onReport = [&] {
        const auto progress = cleaner.progress();
        if (progress.itemsDone == 0)
            return;
        EXPECT_TRUE(progress.measured && progress.items == 3) << "before the first child";
        EXPECT_TRUE(progress.bytesDone > done && progress.bytesDone <= progress.bytes);
        done = progress.bytesDone;
    };
    cleaner.setMeasures(true);
    run();
    EXPECT_GT(done, 0U);
    const auto& outcome = cleaner.outcome();
    EXPECT_TRUE(outcome.measured && outcome.gone == 2 && outcome.left == 1 && outcome.bytes > 0);
    EXPECT_EQ(cleaner.progress().items, 0U) << "without a job";

    fill();
    launcher.records.clear();
    reports.onReport = [&] { cleaner.stop(); };
    for (const bool measures : { true, false }) {
        cleaner.setMeasures(measures);
        EXPECT_EQ(run().back(), "finished");
    }
    reports.onReport = [] {};
    cleaner.setMeasures(true);
    cleaner.clean();
    while (cleaner.progress().items == 0 || !cleaner.progress().planned)
        runLoop.turn(0ms);
    cleaner.stop(); // while it is measured
    runLoop.advance(1s);
    EXPECT_TRUE(launcher.records.empty() && reports.count("failure") == 1);
    EXPECT_EQ(reports.count("- Stopped: 3 items were not deleted."), 1) << testing::PrintToString(reports.lines);
    EXPECT_EQ(cleaner.outcome().left, 3U);
}
