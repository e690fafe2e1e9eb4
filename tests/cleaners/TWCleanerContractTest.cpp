#include "app/TWCleanerTable.h"

#include "editors/TWDictionaryWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "fakes/TWFakeMachine.h"
#include "fakes/TWRecordingCleanerDelegate.h"

using namespace std::chrono_literals;

namespace {

using Lines = std::vector<std::string>;

// A machine on which every cleaner has two things to delete.
struct Stage : TWFakeMachine {
    explicit Stage(const TWCleanerRow& given)
        : cleaner(given.create({ tools, settings }))
    {
        for (const auto* name :
            { "home/one", "home/two", "home/.local/share/Trash/files/one", "home/.local/share/Trash/files/two" })
            root.write(name, "x");
        files.addRule({ true, "", "~/one", TWItemItself });
        files.addRule({ true, "", "~/two", TWItemItself });
        cleaner->setDelegate(&reports);
        given.giveInfo(*cleaner, { settings, places, &files, &dictionary });
    }
    void cleanAndTurn(int turns)
    {
        cleaner->clean();
        for (int turn = 0; turn < turns; ++turn)
            runLoop.turn(0ms);
    }
    void clear()
    {
        reports.take();
        launcher.records.clear();
    }
    std::size_t outcomes() const { return reports.count("success: ") + reports.count("failure: "); }

    TWSettings settings{ userDefaults };
    TWDataFolder folder{ ownFiles, places, bundle };
    TWDictionaryWindowController dictionary{ folder };
    TWFilesWindowController files{ { settings, folder, bundle, fileSystem, places, runLoop, alerts, guard,
        dictionary } };
    std::unique_ptr<TWCleaner> cleaner;
    TWRecordingCleanerDelegate reports;
};

constexpr int EnoughTurns = 12; // for the whole job

}

class TWCleanerContractTest : public testing::TestWithParam<int> {
protected:
    const TWCleanerRow& row = TWCleanerTable()[static_cast<std::size_t>(GetParam())];
};

TEST_P(TWCleanerContractTest, StartsHasOneOutcomeAndFinishes)
{
    Stage stage(row);
    for (int run = 0; run < 2; ++run) {
        stage.cleanAndTurn(EnoughTurns);
        const auto lines = stage.reports.lines;
        EXPECT_EQ(stage.outcomes(), 1U);
        EXPECT_TRUE(lines.front().starts_with("started: ") && lines[lines.size() - 2].starts_with("success: "));
        EXPECT_EQ(lines.back(), "finished");
        EXPECT_EQ(stage.launcher.records.size(), run == 0 ? 2U : 0U) << "the second run finds nothing left";
        stage.clear();
    }
    stage.cleaner->setIsActive(false);
    EXPECT_EQ(stage.cleaner->validate(), "");
    stage.cleanAndTurn(0);
    EXPECT_EQ(stage.reports.lines, Lines{ "finished" });
}

TEST_P(TWCleanerContractTest, MayBeStoppedDestroyedOrStartedAgainAtAnyMoment)
{
    bool over = false;
    for (int turns = 0; !over; ++turns) {
        ASSERT_LT(turns, EnoughTurns);
        Stage stopped(row);
        stopped.cleanAndTurn(turns);
        over = stopped.reports.count("finished") > 0;
        const auto children = stopped.launcher.running();
        stopped.launcher.records.clear();
        stopped.cleaner->stop();
        stopped.runLoop.advance(1min);
        EXPECT_EQ(stopped.cleaner->cancelled(), !over) << turns;
        EXPECT_EQ(stopped.reports.count("failure: The cleaner was terminated"), over ? 0U : 1U) << turns;
        EXPECT_EQ(stopped.reports.count("finished"), 1U) << turns;
        EXPECT_EQ(stopped.launcher.records, Lines(children, "terminate")) << turns;

        Stage destroyed(row);
        destroyed.cleanAndTurn(turns);
        destroyed.clear();
        destroyed.cleaner.reset();
        destroyed.runLoop.advance(1min);
        EXPECT_TRUE(destroyed.reports.lines.empty()) << turns;
        EXPECT_EQ(destroyed.launcher.records, Lines(children, "destroyed")) << turns;

        Stage restarted(row);
        restarted.cleanAndTurn(turns);
        restarted.clear();
        restarted.cleanAndTurn(EnoughTurns);
        EXPECT_EQ(restarted.outcomes(), 1U) << turns;
        EXPECT_EQ(restarted.reports.count("finished"), 1U) << turns << ": the earlier job ends silently";
    }
}

TEST_P(TWCleanerContractTest, StopWithinAReportIsHeeded)
{
    Stage stage(row);
    for (const auto* missing : { "~/missing", "~/missing too" })
        stage.files.addRule({ true, "", missing, TWItemItself });
    stage.reports.onReport = [&] {
        if (stage.reports.count("- ") == 1)
            stage.cleaner->stop();
    };
    stage.cleanAndTurn(EnoughTurns);
    EXPECT_EQ(stage.outcomes(), 1U);
    EXPECT_EQ(stage.reports.count("finished"), 1U);
    EXPECT_EQ(stage.reports.lines.back(), "finished");
}

INSTANTIATE_TEST_SUITE_P(Cleaners, TWCleanerContractTest, testing::ValuesIn([] {
    std::vector<int> available;
    for (int position = 0; position < TWCleanerCount; ++position) {
        if (TWCleanerTable()[static_cast<std::size_t>(position)].available)
            available.push_back(position);
    }
    return available;
}()));
