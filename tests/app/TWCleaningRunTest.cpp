#include "editors/TWFilesWindowController.h"
#include "fakes/TWFakeApplication.h"

namespace {

// The Trash holds one item and the Files cleaner has one rule; both are checked, and only the Trash cleaner is switched
// on.
class TWCleaningRunTest : public testing::Test, protected TWFakeApplication {
protected:
    static constexpr std::size_t Trash = 2;
    static constexpr std::size_t Files = 5;

    TWCleaningRunTest()
    {
        root.write("home/default", "x");
        root.write("home/.local/share/Trash/files/./item", "x");
        userDefaults.values = { { "FirstLaunchDone", true }, { "TrashCleaner", true } };
        checked[Trash] = checked[Files] = true;
        delegate->applicationDidFinishLaunching();
        view.lines.clear();
    }
    void run()
    {
        delegate->clean(checked);
        runLoop.advance(1s);
    }
    // Starts a run that stands at its first file.
    void startRun()
    {
        launcher.ending = TWRecordingLauncher::Ending::ByTest;
        delegate->clean(checked);
        runLoop.runUntilIdle();
    }
    // The results as "type text", with every digit of the text shown as 9.
    Lines results() const
    {
        Lines lines;
        for (const auto& message : delegate->resultsWindowController().messages()) {
            auto text = launcher.shown(message.text);
            std::ranges::replace_if(
                text, [](char c) { return c >= '0' && c <= '9'; }, '9');
            lines.push_back(std::to_string(int(message.type)) + " " + text);
        }
        return lines;
    }
    // The Files cleaner is on and has no active rule.
    void warrantWarning()
    {
        userDefaults.values["FilesCleaner"] = true;
        delegate->editors().get<TWFilesWindowController>().setActive(0, false);
    }
    void failTrash() { launcher.failures[places.trash + "/files/item"] = { TWTermination::Kind::Exited, 1, "" }; }
    bool saw(const std::string& line) const { return std::ranges::count(view.lines, line) > 0; }

    TWRunChoice checked{};
    std::unique_ptr<TWTidewellAppDelegate> delegate = start();
};

constexpr auto Start = "0 Cleaning up NOW! (9999-99-99 99:99:99 +9999)";
constexpr auto End = "0 Done Cleaning! (9999-99-99 99:99:99 +9999)";

}

TEST_F(TWCleaningRunTest, TheSettingsDecideWhoRunsAndEveryReportIsShown)
{
    failTrash();
    run();
    EXPECT_EQ(results(),
        (Lines{ Start, "0 Emptying the Trash...", "0   \xE2\x80\xA2 Delete ROOT/home/.local/share/Trash/files/item ...",
            "0   \xE2\x80\xA2 Could not delete ROOT/home/.local/share/Trash/files/item",
            "2 Some files could not be removed from the Trash!", End }));
    const auto& log = delegate->resultsWindowController();
    EXPECT_EQ(log.count(Trash), (TWLineCount{ 4, 1 }));
    EXPECT_EQ(log.messages()[log.firstExplanation(log.failures().at(0))].namedPath(), places.trash + "/files/item");
    EXPECT_EQ(log.messages().back().cleaner, TWNoCleaner);
    EXPECT_EQ(view.lines,
        (Lines{ "disable", "off 0", "off 1", "off 2", "off 3", "off 4", "off 5", "off 6", "off 7", "yellow 2", "spin 2",
            "red 2", "rest 2", "enable", "ended: failed" }));
    EXPECT_TRUE(locks.held.empty() && notifier.notifications.empty());
}

TEST_F(TWCleaningRunTest, WhatPreventsARunIsOneAlertAndNothingElse)
{
    alerts.leavesOpen = true;
    locks.heldByAnother = true;
    delegate->clean(checked);
    delegate->clean(checked); // while it is open
    ASSERT_EQ(alerts.alerts.size(), 1U);
    EXPECT_EQ(alerts.alerts[0].title, "Another cleaning is running.");
    alerts.answer(TWAnswer::Default);
    checked = {};
    delegate->clean(checked);
    EXPECT_EQ(alerts.alerts[1].title, "No cleaner is activated.");
    alerts.answer(TWAnswer::Default);
    checked[Trash] = true;
    locks.heldByAnother = false;
    locks.error = EISDIR; // another process may still be able to lock
    delegate->clean(checked);
    EXPECT_EQ(alerts.alerts[2].title, "The cleaning could not be started.");
    alerts.answer(TWAnswer::Default);
    EXPECT_EQ(results(), Lines());
    EXPECT_EQ(view.lines, Lines(3, "ended: nothing run"));
    locks.error = EROFS;
    run();
    EXPECT_EQ(view.lines.back(), "ended: succeeded") << "where no lock can be made there is nobody to fear";
}

TEST_F(TWCleaningRunTest, AWarningThatIsNotConfirmedRunsNothing)
{
    warrantWarning();
    alerts.script = { TWAnswer::Alternate };
    run();
    EXPECT_EQ(results(), Lines{ Start });
    EXPECT_EQ(Lines(view.lines.end() - 3, view.lines.end()), (Lines{ "off 7", "enable", "ended: nothing run" }));
    EXPECT_EQ(alerts.alerts[0].text.substr(0, 17) + alerts.alerts[0].defaultButton, "The Files cleanerContinue Anyway");
    EXPECT_TRUE(launcher.records.empty() && locks.held.empty());
    run();
    EXPECT_EQ(view.lines.back(), "ended: succeeded");
}

TEST_F(TWCleaningRunTest, StopEndsTheRunAndOpensNoWindow)
{
    userDefaults.values["ShowResults"] = userDefaults.values["FilesCleaner"] = true;
    delegate->stop();
    startRun();
    delegate->stop();
    runLoop.advance(1s);
    EXPECT_FALSE(delegate->running() || saw("front results") || saw("yellow 5") || saw("red 2"));
    EXPECT_TRUE(saw("stopped 2"));
    EXPECT_EQ(view.lines.back(), "ended: failed");
    const auto lines = results();
    EXPECT_EQ(Lines(lines.end() - 3, lines.end()),
        (Lines{ "2 The cleaner was terminated before its job was finished!",
            "0 Files was not started, because the cleaning was stopped.", End }));
}

TEST_F(TWCleaningRunTest, EndsAsTheSettingsSay)
{
    for (const auto* key : { "GrowlCleaningDone", "AutoQuit", "BounceDockIcon" })
        userDefaults.values[key] = true;
    for (const auto& [fails, mode, quits] : { std::tuple(true, 0, false), { true, 3, true }, { false, 0, true } }) {
        launcher.failures.clear();
        if (fails)
            failTrash();
        userDefaults.values["AutoQuitMode"] = mode;
        view.lines.clear();
        run();
        EXPECT_TRUE(saw("terminate") == quits && saw("attention") != quits && saw("enable") != quits) << mode;
        EXPECT_TRUE(notifier.notifications.back().warning == fails && notifier.notifications.back().sticky == fails);
    }
}

TEST_F(TWCleaningRunTest, OnlyTheFilesCleanerGetsANarrowedSecureMode)
{
    userDefaults.values["FilesCleaner"] = userDefaults.values["SecurelyDeleteFiles"] = true;
    for (const auto& [mode, files, trash] : std::vector<std::tuple<int, std::string, std::string>>{
             { 2, "--medium ", "" }, { 0, "--simple ", "--simple " }, { 256, "--simple ", "" } }) {
        root.write("home/default", "x");
        for (const auto* name : { "files/item", "info/item.trashinfo" })
            root.write(std::string("home/.local/share/Trash/") + name, "x");
        userDefaults.values["SecurelyDeleteFilesMode"] = mode;
        launcher.records.clear();
        run();
        EXPECT_EQ(launcher.records,
            (Lines{ "/libexec/srm -rf " + trash + "ROOT/home/.local/share/Trash/files/./item",
                "/libexec/srm -rf " + trash + "ROOT/home/.local/share/Trash/info/./item.trashinfo",
                "/libexec/srm -rf " + files + "ROOT/home/./default" }));
    }
}

TEST_F(TWCleaningRunTest, CleanDuringARunStartsAgain)
{
    startRun();
    EXPECT_TRUE(delegate->running() && launcher.running() == 1 && locks.held.size() == 1);
    launcher.ending = TWRecordingLauncher::Ending::OnALaterTurn;
    launcher.atLaunch = [this] { EXPECT_EQ(locks.held.size(), 1U) << "the second run took the lock over"; };
    run();
    const auto lines = results();
    EXPECT_TRUE(lines.size() == 5 && lines.front() == Start && lines.back() == End);
    EXPECT_EQ(std::count(view.lines.begin(), view.lines.end(), "enable"), 1) << "the first run ended silently";
    EXPECT_EQ(launcher.records.size(), 3U) << "its child included";
    EXPECT_TRUE(locks.held.empty() && locks.paths.size() == 1);
}

TEST_F(TWCleaningRunTest, WhileTheSecondRunIsAskedForTheFirstOneStaysAsItWas)
{
    for (const auto& [answer, answeredInTime] :
        { std::pair(TWAnswer::Alternate, false), { TWAnswer::Alternate, true }, { TWAnswer::Default, true } }) {
        root.write("home/default", "x");
        root.write("home/.local/share/Trash/files/item", "x");
        userDefaults.values["FilesCleaner"] = false;
        alerts.leavesOpen = true;
        startRun();
        const auto before = results();
        view.lines.clear();
        launcher.records.clear();
        // Switched on only now, with a list that warrants a warning.
        userDefaults.values["FilesCleaner"] = userDefaults.values["SecurelyDeleteFiles"] = true;
        delegate->editors().get<TWFilesWindowController>().addRule({ false, "", "~/x", TWItemsWithKeywords });
        delegate->clean(checked);
        delegate->clean(checked);
        ASSERT_EQ(alerts.open.size(), 1U);
        runLoop.runUntilIdle();
        EXPECT_TRUE(results() == before && view.lines.empty());
        launcher.ending = TWRecordingLauncher::Ending::OnALaterTurn;
        const bool again = answer == TWAnswer::Default;
        if (answeredInTime) {
            alerts.answer(answer);
            EXPECT_TRUE(again || (delegate->running() && locks.held.size() == 1 && view.lines.empty()));
        }
        if (!again)
            launcher.endAll();
        runLoop.advance(1s);
        EXPECT_EQ(launcher.records.size() > 1 && launcher.records.front() == "destroyed", again);
        EXPECT_EQ(root.exists("home/default"), !again) << "the run that goes on has taken up nothing";
        EXPECT_TRUE(again ? saw("green 5") : view.lines.back() == "ended: succeeded");
        if (!answeredInTime)
            alerts.answer(answer);
        EXPECT_TRUE(!delegate->running() && locks.held.empty());
    }
}

TEST_F(TWCleaningRunTest, LostSettingsAreConfirmedAndAListThatCannotBeReadFails)
{
    userDefaults.problemLine = "The settings were lost.";
    alerts.script = { TWAnswer::Alternate };
    run();
    EXPECT_EQ(alerts.alerts.back().text, "The settings were lost.");
    EXPECT_EQ(results(), (Lines{ Start, "0 The settings were lost." }));
    userDefaults.problemLine.clear();
    root.write("home/.local/share/Tidewell/FilesRules.plist", "damaged");
    userDefaults.values["FilesCleaner"] = true;
    delegate = start();
    delegate->applicationDidFinishLaunching();
    run();
    EXPECT_TRUE(saw("red 5") && root.exists("home/default"));
}

TEST_F(TWCleaningRunTest, ACommandEndsQuietlyAndIgnoresTheSwitches)
{
    for (const auto* key : { "ShowResults", "AutoQuit", "BounceDockIcon", "GrowlCleaningDone" })
        userDefaults.values[key] = true;
    userDefaults.values["ShowResultsMode"] = 2;
    TWRunChoice choice{};
    delegate->cleanForCommand(choice);
    EXPECT_EQ(alerts.alerts.back().title, "No cleaner is activated.");
    choice[Files] = true;
    delegate->cleanForCommand(choice);
    runLoop.advance(1s);
    EXPECT_TRUE(saw("green 5") && !saw("green 2") && !saw("terminate") && !saw("attention") && !saw("front results"));
    EXPECT_FALSE(notifier.notifications.back().clickable);
}

TEST_F(TWCleaningRunTest, TheEndOfTheDelegateIsSilent)
{
    startRun();
    view.lines.clear();
    delegate.reset();
    EXPECT_EQ(launcher.records.back(), "destroyed");
    delegate = start();
    warrantWarning();
    alerts.leavesOpen = true;
    delegate->clean(checked);
    view.lines.clear();
    delegate.reset();
    alerts.answer(TWAnswer::Default);
    EXPECT_TRUE(view.lines.empty() && locks.held.empty());
}
