#include "ui/windows/TWWindowSession.h"

#include "TWUITestSupport.h"
#include "support/TWText.h"
#include "ui/sheets/TWSheet.h"
#include "ui/windows/TWQtAlerts.h"

#include <QApplication>
#include <QCheckBox>
#include <QPushButton>
#include <QTimer>

using namespace TWUITest;

namespace {

class TWMainWindowTest : public testing::Test {
protected:
    TWMainWindowTest()
    {
        machine.root.write("home/.local/share/Trash/files/one", "1");
        itemSize = machine.fileSystem.look(machine.root.write("home/.local/share/Trash/files/two", "2")).facts.bytes;
        machine.root.write("home/.local/share/Tidewell/FilesRules.plist",
            "<plist><array><dict><key>Active</key><true/><key>FilePath</key><string/></dict>"
            "<dict><key>FilePath</key><string/></dict></array></plist>");
        machine.userDefaults.values["ClipboardCleaner"] = true;
        delegate = std::make_unique<TWTidewellAppDelegate>(machine.platform, TWLaunchKind::Window);
        session = std::make_unique<TWWindowSession>(*delegate, qtAlerts, fileManager);
        window = &session->mainWindow();
        delegate->applicationDidFinishLaunching();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window));
        EXPECT_TRUE(machine.waitFor([this] { return !line("trash").empty(); })) << "what waits for the first paint";
    }

    QCheckBox* check(const char* cleaner) { return child<QCheckBox>(*window, cleaner + std::string("CheckBox")); }
    std::string line(const char* cleaner)
    {
        return child<QLabel>(*window, cleaner + std::string("QuietLabel"))->text().toStdString();
    }
    std::string light(const char* cleaner)
    {
        return child<QWidget>(*window, cleaner + std::string("Light"))->accessibleName().toStdString();
    }
    void refresh()
    {
        window->refresh();
        machine.runLoop.runUntilIdle();
    }
    // Starts a run that stands at its first file.
    void startRun()
    {
        QTest::mouseClick(check("trash"), Qt::LeftButton, {}, { 8, 8 });
        QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier);
        ASSERT_TRUE(machine.waitFor([&] { return machine.launcher.running() == 1; }));
    }

    Machine machine;
    std::uint64_t itemSize = 0; // of each of the two in the Trash
    std::unique_ptr<TWTidewellAppDelegate> delegate;
    TWFakeFileManager fileManager{ machine.runLoop };
    TWQtAlerts qtAlerts;
    std::unique_ptr<TWWindowSession> session;
    TWMainWindow* window = nullptr;
};

TEST_F(TWMainWindowTest, RowsShowTheSettingsAndWhatTheCleanersWouldDo)
{
    machine.runLoop.runUntilIdle();
    EXPECT_EQ(line("trash"), "2 items, " + TWText::size(2 * itemSize));
    EXPECT_EQ(line("files"), "1 of 2 rules on: 1 item refused: the path is empty.");

    QTest::keyClick(check("trash"), Qt::Key_Space);
    EXPECT_TRUE(delegate->settings().boolean(TWKey::TrashCleaner));
    EXPECT_FALSE(check("clipboard")->isEnabled());
    EXPECT_EQ(child<QLabel>(*window, "outcomeLabel")->text().toStdString(), line("trash"));

    // Another process has emptied the Trash and changed the settings meanwhile.
    std::filesystem::remove_all(machine.places.trash);
    delegate->settings().set(TWKey::TrashCleaner, false);
    refresh();
    EXPECT_EQ(line("trash"), "The Trash is empty");
    EXPECT_FALSE(check("trash")->isChecked());
    machine.root.write("home/.local/share/Trash/files", "no folder");
    refresh();
    EXPECT_TRUE(line("trash").ends_with("could not be read (Not a directory).")) << line("trash");
}

TEST_F(TWMainWindowTest, RowsStayFreshAndWarnOfShortWordsAndEditsThatAreNotSaved)
{
    const auto unsaved = [this] { return child<QLabel>(*window, "unsavedBarLabel")->text(); };
    machine.runLoop.runUntilIdle();
    machine.root.write("home/.local/share/Trash/files/three", "3");
    machine.runLoop.advance(2s);
    EXPECT_TRUE(line("trash").starts_with("3 items, ")) << line("trash");

    EXPECT_EQ(unsaved(), "");
    auto& files = delegate->editors().get<TWFilesWindowController>();
    files.removeRule(0);
    files.removeRule(0);
    files.addRule({ true, "", "~", TWItemsWithKeywords });
    delegate->editors().dictionary().setWordDictionary({ "secret", "q" });
    const auto height = window->height();
    refresh();
    EXPECT_LT(window->height() - height, 100) << "grows only by the bar";
    EXPECT_TRUE(line("files").find("; the word \"q\" is short") != std::string::npos) << line("files");
    EXPECT_EQ(unsaved(), "Not saved yet: the dictionary, the Files rules.");
    child<QPushButton>(*window, "unsavedBarButton")->click();
    EXPECT_EQ(unsaved(), "");
    EXPECT_TRUE(window->canQuitSilently());

    const auto before = line("files");
    machine.root.write("home/secret", "");
    machine.runLoop.advance(11s);
    EXPECT_NE(line("files"), before);
}

TEST_F(TWMainWindowTest, TheDictionaryOpensOnTopOfTheFilesRules)
{
    auto& files = *session->sheet("files");
    files.open();
    child<QPushButton>(files, "dictionaryPushButton")->click();
    auto& dictionary = *session->sheet("dictionary");
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dictionary));
    QTest::keyClicks(dictionary.focusWidget(), "word,");
    QTest::keyClick(dictionary.windowHandle(), Qt::Key_Escape);
    EXPECT_EQ(delegate->editors().dictionary().wordDictionary(), Lines{ "word" });
    EXPECT_TRUE(QTest::qWaitForWindowActive(&files));
}

TEST_F(TWMainWindowTest, ReturnPressesWhatHasTheFocusAndCleanOnlyIfNothingHasIt)
{
    QTest::mouseClick(check("trash"), Qt::LeftButton, {}, { 8, 8 });
    QTest::keyClick(window->windowHandle(), Qt::Key_Return);
    EXPECT_TRUE(check("trash")->isChecked()) << "only the space bar ticks it";
    child<QPushButton>(*window, "filesEditButton")->setFocus();
    QTest::keyClick(window->windowHandle(), Qt::Key_Return);
    EXPECT_TRUE(session->sheet("files")->isVisible());
    EXPECT_TRUE(child<QPushButton>(*window, "cleanButton")->isDefault() && !delegate->running());
    session->sheet("files")->close();
    window->focusWidget()->clearFocus();
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(delegate->running());
}

TEST_F(TWMainWindowTest, ARunIsShownAndEndsWithTheLinesCountedAgainThoughClosingWasAskedFor)
{
    auto* clean = child<QPushButton>(*window, "cleanButton");
    auto* stop = child<QPushButton>(*window, "stopButton");
    startRun();
    EXPECT_EQ(light("trash"), "Running");
    EXPECT_TRUE(stop->isVisible() && !clean->isEnabled());
    EXPECT_FALSE(window->close());
    EXPECT_FALSE(window->close()) << "and asks only once";
    ASSERT_EQ(machine.alerts.alerts.size(), 1U);
    EXPECT_EQ(machine.alerts.alerts[0].title, "Cleaning is still going on.");
    EXPECT_EQ(machine.alerts.alerts[0].confirming, TWConfirming::LosesSomething);
    machine.alerts.answer(TWAnswer::Alternate);
    EXPECT_TRUE(delegate->running());

    machine.launcher.ending = TWRecordingLauncher::Ending::OnALaterTurn;
    machine.launcher.endAll();
    EXPECT_TRUE(machine.waitFor([&] { return clean->isEnabled(); }));
    EXPECT_EQ(light("trash"), "Succeeded");
    EXPECT_EQ(child<QLabel>(*window, "outcomeLabel")->text().toStdString(),
        "Cleaning is done. Freed " + TWText::size(2 * itemSize) + ".");
    EXPECT_TRUE(child<QPushButton>(*window, "resultsButton")->isVisible());
    EXPECT_TRUE(machine.waitFor([&] { return line("trash") == "The Trash is empty"; }));
    EXPECT_FALSE(stop->isVisible());
}

TEST_F(TWMainWindowTest, ClosingDuringARunStopsItAndQuits)
{
    startRun();
    EXPECT_FALSE(window->close());
    machine.alerts.answer(TWAnswer::Default);
    EXPECT_TRUE(machine.waitFor([&] { return !delegate->running(); }));
    EXPECT_EQ(machine.launcher.records.size(), 2U) << "nothing further was begun";
}

TEST_F(TWMainWindowTest, EscapeStopsARunAndOneThatEndsBeforeTheAnswerLetsTheWindowClose)
{
    startRun();
    EXPECT_FALSE(window->close());
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(machine.waitFor([&] { return !delegate->running(); }));
    EXPECT_EQ(light("trash"), "Stopped");
    EXPECT_EQ(
        child<QLabel>(*window, "outcomeLabel")->text(), "Cleaning was stopped. Nothing was deleted. 2 items stayed.");
    EXPECT_EQ(machine.launcher.records.back(), "terminate");
    EXPECT_TRUE(window->isVisible());
    machine.alerts.answer(TWAnswer::Default);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(TWMainWindowTest, QuittingWithUnsavedEditsHasToBeConfirmed)
{
    delegate->editors().dictionary().setWordDictionary({ "unsaved" });
    const auto file = machine.root.folder("home/.local/share/Tidewell/Dictionary.plist");
    for (const auto answer : { TWAnswer::Alternate, TWAnswer::Default }) {
        EXPECT_TRUE(session->askedBeforeEnd()) << "as when the window is closed, or the program is told to end";
        machine.alerts.answer(answer);
        EXPECT_TRUE(window->isVisible());
    }
    EXPECT_NE(machine.alerts.alerts.back().text.find("Dictionary.plist"), std::string::npos) << "could not be saved";
    std::filesystem::remove(file);
    machine.alerts.answer(TWAnswer::Default);
    EXPECT_FALSE(window->close());
    machine.alerts.answer(TWAnswer::Default);
    EXPECT_TRUE(!window->isVisible() && std::filesystem::exists(file));
}

TEST_F(TWMainWindowTest, SettingsThatAreLostOrCannotBeSavedAreAnnounced)
{
    const auto bar = [this] { return child<QLabel>(*window, "messageBarLabel")->text(); };
    EXPECT_EQ(bar(), "");
    machine.userDefaults.writeProblem = "The settings cannot be saved.";
    check("trash")->click();
    EXPECT_EQ(bar(), "The settings cannot be saved.");

    session.reset();
    machine.userDefaults.problemLine = "The settings cannot be read.";
    machine.userDefaults.writeProblem.clear();
    session = std::make_unique<TWWindowSession>(*delegate, qtAlerts, fileManager);
    window = &session->mainWindow();
    EXPECT_EQ(bar(), "The settings cannot be read.");
}

TEST_F(TWMainWindowTest, OnlyClosingTheMainWindowQuits)
{
    session->bringToFront(TWWindow::Results);
    EXPECT_TRUE(machine.waitFor([&] { return session->isKeyWindow(TWWindow::Results); }));
    QApplication::activeWindow()->close();
    EXPECT_TRUE(machine.waitFor([&] { return !session->isKeyWindow(TWWindow::Results); }));
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->close());
    QTimer::singleShot(3000, qApp, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0);
}

}
