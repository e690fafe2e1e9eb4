#include "app/TWCleanerTable.h"

#include "editors/TWDictionaryWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "fakes/TWFakeMachine.h"
#include "fakes/TWRecordingCleanerDelegate.h"

using namespace std::chrono_literals;

namespace {

// A machine on which every cleaner has two things to delete.
struct Stage : TWFakeMachine {
    explicit Stage(const TWCleanerRow& given)
        : row(given)
    {
        for (const auto* name : {"home/one", "home/two", "home/.local/share/Trash/files/one", "home/.local/share/Trash/files/two"})
            root.write(name, "x");
        files.addRule({true, "", "~/one", TWItemItself});
        files.addRule({true, "", "~/two", TWItemItself});
        cleaner->setDelegate(&reports);
        prepare();
    }
    void prepare() { row.giveInfo(*cleaner, {settings, places, &files, &dictionary}); }
    void cleanAndTurn(int turns)
    {
        cleaner->clean();
        for (int turn = 0; turn < turns; ++turn)
            runLoop.turn(0ms);
    }
    std::size_t outcomes() const { return reports.count("success: ") + reports.count("failure: "); }

    const TWCleanerRow& row;
    TWSettings settings {userDefaults};
    TWDataFolder folder {fileSystem, places, bundle};
    TWDictionaryWindowController dictionary {folder};
    TWFilesWindowController files {
        {settings, folder, bundle, fileSystem, places, runLoop, alerts, guard, dictionary}};
    std::unique_ptr<TWCleaner> cleaner = row.create({tools, settings});
    TWRecordingCleanerDelegate reports;
};

constexpr int EnoughTurns = 12; // for the whole job

}

class TWCleanerContractTest : public testing::TestWithParam<int> {
protected:
    const TWCleanerRow& row = TWCleanerTable()[static_cast<std::size_t>(GetParam())];
};

TEST_P(TWCleanerContractTest, AnInactiveCleanerOnlyFinishes)
{
    Stage stage(row);
    stage.cleaner->setIsActive(false);
    EXPECT_EQ(stage.cleaner->validate(), "");
    stage.cleanAndTurn(0);
    EXPECT_EQ(stage.reports.take(), std::vector<std::string> {"finished"});
    stage.runLoop.advance(1min);
    EXPECT_TRUE(stage.reports.lines.empty() && stage.launcher.records.empty());
}

TEST_P(TWCleanerContractTest, AnActiveCleanerStartsHasOneOutcomeAndFinishes)
{
    Stage stage(row);
    for (int run = 0; run < 2; ++run) {
        stage.cleanAndTurn(EnoughTurns);
        stage.runLoop.advance(1min);
        const auto lines = stage.reports.lines;
        EXPECT_EQ(stage.outcomes(), 1U);
        EXPECT_EQ(lines.front().substr(0, 9), "started: ");
        EXPECT_EQ(lines[lines.size() - 2].substr(0, 9), "success: ");
        EXPECT_EQ(lines.back(), "finished");
        EXPECT_EQ(stage.launcher.records.empty(), run == 1) << "the second run finds nothing left";
        stage.reports.take();
        stage.launcher.records.clear();
    }
    Stage silent(row);
    silent.cleaner->setDelegate(nullptr);
    silent.cleanAndTurn(EnoughTurns);
    EXPECT_EQ(silent.launcher.records.size(), 2U) << "the job does not need a delegate";
}

TEST_P(TWCleanerContractTest, ARestartAtAnyMomentEndsTheEarlierJobSilently)
{
    for (int turns = 0; turns < EnoughTurns; ++turns) {
        Stage stage(row);
        stage.cleanAndTurn(turns);
        if (stage.reports.count("finished") > 0)
            return;
        stage.prepare();
        stage.cleanAndTurn(EnoughTurns);
        EXPECT_EQ(stage.outcomes(), 1U) << turns;
        EXPECT_EQ(stage.reports.count("finished"), 1U) << turns;
        EXPECT_EQ(stage.reports.count("started"), 2U) << turns;
    }
    ADD_FAILURE() << "the job takes more turns than expected";
}

TEST_P(TWCleanerContractTest, StopAndDestructionAtAnyMomentDeleteNothingFurther)
{
    for (int turns = 0; turns < EnoughTurns; ++turns) {
        Stage stage(row);
        stage.cleanAndTurn(turns);
        const bool over = stage.reports.count("finished") > 0;
        const auto launched = stage.launcher.running();
        stage.launcher.records.clear();
        stage.cleaner->stop();
        stage.runLoop.advance(1min);
        EXPECT_EQ(stage.cleaner->cancelled(), !over) << turns;
        EXPECT_EQ(stage.reports.count("failure: The cleaner was terminated"), over ? 0U : 1U) << turns;
        EXPECT_EQ(stage.reports.count("finished"), 1U) << turns;
        EXPECT_EQ(stage.launcher.records, std::vector<std::string>(launched, "terminate")) << turns;

        Stage gone(row);
        gone.cleanAndTurn(turns);
        gone.reports.take();
        gone.launcher.records.clear();
        gone.cleaner.reset();
        gone.runLoop.advance(1min);
        EXPECT_TRUE(gone.reports.lines.empty()) << turns;
        EXPECT_EQ(gone.launcher.records, std::vector<std::string>(launched, "destroyed")) << turns;
    }
}

TEST_P(TWCleanerContractTest, StopWithinAReportIsHeeded)
{
    Stage stage(row);
    stage.files.addRule({true, "", "~/missing", TWItemItself});
    stage.files.addRule({true, "", "~/missing too", TWItemItself});
    stage.reports.onReport = [&] {
        if (stage.reports.count("- ") == 1)
            stage.cleaner->stop();
    };
    stage.cleanAndTurn(EnoughTurns);
    EXPECT_EQ(stage.outcomes(), 1U);
    EXPECT_EQ(stage.reports.count("finished"), 1U);
    EXPECT_EQ(stage.reports.lines.back(), "finished");
    EXPECT_LE(stage.launcher.records.size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Cleaners, TWCleanerContractTest, testing::ValuesIn([] {
    std::vector<int> available;
    for (int position = 0; position < TWCleanerCount; ++position) {
        if (TWCleanerTable()[static_cast<std::size_t>(position)].available)
            available.push_back(position);
    }
    return available;
}()));
