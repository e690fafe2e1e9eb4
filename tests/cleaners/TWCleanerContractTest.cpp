#include "app/TWCleanerTable.h"

#include "app/TWEditors.h"
#include "editors/TWApplicationsWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "editors/TWLogsWindowController.h"
#include "editors/TWRecentItemsWindowController.h"
#include "editors/TWVolumesWindowController.h"
#include "fakes/TWFakeMachine.h"
#include "fakes/TWRecordingCleanerDelegate.h"

namespace {

constexpr std::size_t EnoughTurns = 40; // for the whole job
constexpr auto Terminated = "failure: The cleaner was terminated";

struct Machine : TWFakeMachine {
    TWEditors editors{ { settings, listFolder, bundle, alerts, tools, programs, logs, workspace, volumes } };
};

// What the contract has to know about one cleaner: how to give it something to clean, and how to see what it did.
struct StageRow {
    const char* cleaner;
    std::size_t items; // in its plan
    void (*fill)(Machine&);
    void (*addLate)(Machine&); // adds what a plan that was made before must leave alone
    void (*spoil)(Machine&); // makes its jobs fail
};

void addRule(Machine& machine, const char* path, int whatToDelete)
{
    machine.editors.get<TWFilesWindowController>().addRule({ true, "", path, whatToDelete });
}

void checkLog(Machine& machine, const std::string& path)
{
    machine.editors.get<TWLogsWindowController>().list().edit([&](std::vector<TWLogsRecord>& records) {
        records.push_back({ "", path, TWLogChecked, std::nullopt });
    });
}

void startApplication(Machine& machine, const char* path, std::int64_t process)
{
    machine.workspace.copies.push_back({ path, process, 1, 0 });
    machine.editors.get<TWApplicationsWindowController>().list().edit([&](std::vector<TWApplicationsRecord>& records) {
        records.push_back({ path, "App" });
    });
}

void mountVolume(Machine& machine, const std::string& path)
{
    machine.volumes.mount(path);
    machine.editors.get<TWVolumesWindowController>().list().changeSaved([&](std::vector<TWVolumesRecord>& records) {
        records.push_back({ true, "Volume", path });
        return true;
    });
    // What the helper does.
    machine.launcher.atLaunch = [&machine] {
        const auto& line = machine.launcher.records.back();
        machine.volumes.unmount("/" + line.substr(line.find("media")));
    };
}

// Everything that a cleaner could change.
Lines worldOf(const Machine& machine)
{
    Lines lines = machine.launcher.records;
    lines.insert(lines.end(), machine.workspace.requests.begin(), machine.workspace.requests.end());
    for (const auto& entry : std::filesystem::recursive_directory_iterator(machine.root.path()))
        lines.push_back(machine.launcher.shown(entry.path()));
    std::sort(lines.begin(), lines.end());
    return lines;
}

const StageRow Stages[] = {
    { "applications", 2,
        [](Machine& machine) {
            startApplication(machine, "/apps/one", 10);
            startApplication(machine, "/apps/two", 11);
        },
        [](Machine& machine) { startApplication(machine, "/apps/late", 12); },
        [](Machine& machine) { machine.workspace.stubborn = { 11 }; } },
    { "volumes", 2,
        [](Machine& machine) {
            mountVolume(machine, "/media/one");
            mountVolume(machine, "/media/two");
        },
        [](Machine& machine) { mountVolume(machine, "/media/late"); },
        [](Machine& machine) { machine.volumes.uses["/media/two"].isInUse = true; } },
    { "trash", 3,
        [](Machine& machine) {
            for (const auto* name : { "files/one", "files/two", "info/one.trashinfo" })
                machine.root.write(std::string("home/.local/share/Trash/") + name, "x");
        },
        [](Machine& machine) { machine.root.write("home/.local/share/Trash/files/late", "x"); },
        [](Machine& machine) {
            std::filesystem::remove_all(machine.places.trash + "/files");
            machine.root.link("home/.local/share/Trash/files", "info");
        } },
    { "recent-items", 3,
        [](Machine& machine) {
            machine.root.write("home/rc", "[Recent]\na=1\n[View]\nHistory=2\nb=3\n");
            machine.root.write("home/list", "x");
            auto& recentItems = machine.editors.get<TWRecentItemsWindowController>();
            recentItems.addRule({ true, "Prog", "~/rc", false, "Recent, History" });
            recentItems.addRule({ true, "Prog", "~/list", true, "" });
            recentItems.addRule({ true, "Prog", "~/missing", true, "" });
        },
        [](Machine& machine) { machine.root.write("home/missing", "x"); },
        [](Machine& machine) {
            machine.editors.get<TWRecentItemsWindowController>().addRule({ true, "Prog", "~", true, "" });
        } },
    { "files", 2,
        [](Machine& machine) {
            for (const auto* name : { "home/one", "home/two", "home/kept" })
                machine.root.write(name, "x");
            for (const auto* path : { "~/one", "~/two", "~/missing", "~/missing too" })
                addRule(machine, path, TWItemItself);
        },
        [](Machine& machine) { machine.root.write("home/missing", "x"); },
        [](Machine& machine) { addRule(machine, "~", TWItemItself); } },
    { "logs", 2,
        [](Machine& machine) {
            const auto log = machine.root.write("var/log/one", "x");
            machine.root.write("var/log/two/inside", "x");
            machine.openFiles.files = { { log, {}, 4096, { "daemon" } } };
            checkLog(machine, std::string(TWAllSystemLogs));
        },
        [](Machine& machine) { machine.root.write("var/log/late", "x"); },
        [](Machine& machine) { checkLog(machine, "~"); } },
};

const StageRow& stageOf(const TWCleanerRow& row)
{
    const auto* const found
        = std::ranges::find_if(Stages, [&](const auto& stage) { return stage.cleaner == std::string_view(row.name); });
    if (found == std::end(Stages))
        throw std::out_of_range(std::string("Add a stage for the cleaner ") + row.name);
    return *found;
}

enum class Job { Succeeds, Fails };

// A machine with one cleaner that has something to do.
struct Stage : Machine {
    explicit Stage(const TWCleanerRow& given, Job job = Job::Succeeds)
        : row(stageOf(given))
        , cleaner(given.make({ tools, settings, programs, logs, workspace, volumes }))
    {
        row.fill(*this);
        if (job == Job::Fails)
            row.spoil(*this);
        given.giveInfo(*cleaner, { settings, places, &editors });
        cleaner->setDelegate(&reports);
        reports.shown = [this](std::string text) { return launcher.shown(std::move(text)); };
    }
    void cleanAndTurn(std::size_t turns)
    {
        cleaner->clean();
        turn(turns);
    }
    void turn(std::size_t turns)
    {
        for (; turns > 0; --turns)
            runLoop.turn(100ms);
    }
    void expectOneEnd(const std::string& when) const
    {
        EXPECT_EQ(reports.count("success: ") + reports.count("failure: "), 1U) << when;
        EXPECT_EQ(reports.count("finished"), 1U) << when;
        EXPECT_EQ(reports.lines.back(), "finished") << when;
        EXPECT_EQ(launcher.running(), 0U) << when;
    }

    const StageRow& row;
    std::unique_ptr<TWCleaner> cleaner;
    TWRecordingCleanerDelegate reports;
};

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
        stage.expectOneEnd("run " + std::to_string(run));
        const auto lines = stage.reports.take();
        EXPECT_TRUE(lines.front().starts_with("started: ") && lines[lines.size() - 2].starts_with("success: "));
    }
    stage.cleaner->setIsActive(false);
    EXPECT_EQ(stage.cleaner->validate(), "");
    stage.cleanAndTurn(0);
    stage.cleaner->carryOut({});
    EXPECT_EQ(stage.reports.lines, (Lines{ "finished", "finished" }));
}

TEST_P(TWCleanerContractTest, APlanChangesNothingAndIsWhatARunDoes)
{
    Stage planned(row);
    const auto before = worldOf(planned);
    auto plan = TWPlanOf(*planned.cleaner, planned.runLoop);
    EXPECT_EQ(plan.items.size(), planned.row.items);
    EXPECT_EQ(worldOf(planned), before);
    EXPECT_TRUE(planned.reports.lines.empty() && planned.alerts.alerts.empty());

    Stage run(row);
    run.cleanAndTurn(EnoughTurns);
    EXPECT_NE(worldOf(run), before);
    run.row.addLate(run);
    planned.row.addLate(planned);
    planned.cleaner->carryOut({ std::make_shared<const TWPlan>(std::move(plan)), {}, 0, nullptr, "" });
    planned.turn(EnoughTurns);
    EXPECT_EQ(worldOf(planned), worldOf(run));
    EXPECT_EQ(planned.reports.lines, run.reports.lines);
}

TEST_P(TWCleanerContractTest, MayBeStoppedDestroyedOrStartedAgainAtAnyMoment)
{
    bool over = false;
    for (std::size_t turns = 0; !over; ++turns) {
        ASSERT_LT(turns, EnoughTurns);
        SCOPED_TRACE("after turn " + std::to_string(turns));
        Stage stopped(row);
        stopped.cleanAndTurn(turns);
        over = stopped.reports.count("finished") > 0;
        stopped.cleaner->stop();
        stopped.cleaner->stop();
        stopped.runLoop.advance(1min);
        EXPECT_EQ(stopped.cleaner->cancelled(), !over);
        EXPECT_EQ(stopped.reports.count(Terminated), over ? 0U : 1U);
        stopped.expectOneEnd("stopped");

        for (const auto* then : { "destroyed", "started again", "started again, switched off" }) {
            Stage stage(row);
            stage.cleanAndTurn(turns);
            stage.reports.take();
            if (then == std::string("destroyed"))
                stage.cleaner.reset();
            else
                stage.cleaner->setIsActive(then == std::string("started again"));
            if (stage.cleaner)
                stage.cleaner->clean();
            stage.runLoop.advance(1min);
            if (then == std::string("started again"))
                stage.expectOneEnd("the earlier job ends silently");
            else
                EXPECT_EQ(stage.reports.lines, stage.cleaner ? Lines{ "finished" } : Lines());
            EXPECT_EQ(stage.launcher.running(), 0U) << then;
        }
    }
}

TEST_P(TWCleanerContractTest, TheDelegateMayStopRestartOrDestroyInEveryReport)
{
    for (const auto job : { Job::Succeeds, Job::Fails }) {
        Stage quiet(row, job);
        quiet.cleanAndTurn(EnoughTurns);
        const auto all = quiet.reports.lines;
        EXPECT_TRUE(all.at(all.size() - 2).starts_with(job == Job::Succeeds ? "success: " : "failure: "));
        for (std::size_t report = 1; report <= all.size(); ++report) {
            SCOPED_TRACE("in report " + std::to_string(report) + ", " + all[report - 1]);
            const auto run = [&](Stage& stage, const std::function<void()>& act) {
                stage.reports.onReport = [&, once = false]() mutable {
                    if (stage.reports.lines.size() == report && !std::exchange(once, true))
                        act();
                };
                stage.cleaner->clean();
                stage.runLoop.advance(1min);
                EXPECT_EQ(stage.launcher.running(), 0U);
            };
            Stage stopped(row, job);
            run(stopped, [&] { stopped.cleaner->stop(); });
            stopped.expectOneEnd("stopped");
            const bool beforeOutcome = report + 1 < all.size();
            EXPECT_EQ(stopped.reports.count(Terminated), beforeOutcome ? 1U : 0U);
            EXPECT_EQ(stopped.cleaner->cancelled(), beforeOutcome);

            Stage restarted(row, job);
            run(restarted, [&] {
                restarted.reports.take();
                restarted.cleaner->clean();
            });
            restarted.expectOneEnd("restarted");

            Stage destroyed(row, job);
            run(destroyed, [&] { destroyed.cleaner.reset(); });
            EXPECT_EQ(destroyed.reports.lines, Lines(all.begin(), all.begin() + std::ptrdiff_t(report)));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Cleaners, TWCleanerContractTest, testing::ValuesIn([] {
    std::vector<int> available;
    for (int position = 0; position < TWCleanerCount; ++position) {
        if (TWCleanerTable()[static_cast<std::size_t>(position)].available)
            available.push_back(position);
    }
    return available;
}()));
