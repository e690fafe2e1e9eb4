#include "ui/TWMainWindow.h"

#include "TWUITestSupport.h"
#include "support/TWText.h"
#include "ui/TWSpinner.h"

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
        machine.userDefaults.values["LogsCleaner"] = true;
        delegate = std::make_unique<TWTidewellAppDelegate>(machine.platform, TWLaunchKind::Window);
        window = std::make_unique<TWMainWindow>(*delegate);
        delegate->applicationDidFinishLaunching();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        EXPECT_TRUE(machine.waitFor([this] { return !line("trash").empty(); })) << "what waits for the first paint";
    }

    std::string line(const std::string& cleaner)
    {
        return child<QLabel>(*window, cleaner + "QuietLabel")->text().toStdString();
    }
    std::string light(const std::string& cleaner)
    {
        return child<QWidget>(*window, cleaner + "Light")->accessibleName().toStdString();
    }
    // Starts a run that stands at its first file.
    void startRun()
    {
        QTest::mouseClick(child<QCheckBox>(*window, "trashCheckBox"), Qt::LeftButton, {}, { 8, 8 });
        QTest::keyClick(window.get(), Qt::Key_Return);
        ASSERT_TRUE(machine.waitFor([&] { return machine.launcher.running() == 1; }));
    }

    Machine machine;
    std::uint64_t itemSize = 0; // of each of the two in the Trash
    std::unique_ptr<TWTidewellAppDelegate> delegate;
    std::unique_ptr<TWMainWindow> window;
};

TEST_F(TWMainWindowTest, RowsShowTheSettingsAndWhatTheCleanersWouldDo)
{
    machine.runLoop.runUntilIdle();
    EXPECT_EQ(line("trash"), "2 items, " + TWText::size(2 * itemSize));
    EXPECT_EQ(line("files"), "1 of 2 rules on");
    EXPECT_EQ(line("logs"), "Comes in a later version");

    auto* trash = child<QCheckBox>(*window, "trashCheckBox");
    QTest::keyClick(trash, Qt::Key_Space);
    EXPECT_TRUE(delegate->settings().boolean(TWKey::TrashCleaner));
    EXPECT_FALSE(window->isChecked(TWCleanerPosition("logs"))) << "not available, whatever the settings say";
    EXPECT_FALSE(child<QCheckBox>(*window, "logsCheckBox")->isEnabled());

    // Another process has emptied the Trash and changed the settings meanwhile.
    std::filesystem::remove_all(machine.places.trash);
    delegate->settings().set(TWKey::TrashCleaner, false);
    window->refresh();
    EXPECT_EQ(line("trash"), "The Trash is empty");
    EXPECT_FALSE(trash->isChecked());
    machine.root.write("home/.local/share/Trash/files", "no folder");
    window->refresh();
    EXPECT_EQ(line("trash"), "The Trash cannot be read");
}

TEST_F(TWMainWindowTest, ARunIsShownAndEndsWithTheLinesCountedAgain)
{
    auto* clean = child<QPushButton>(*window, "cleanButton");
    auto* stop = child<QPushButton>(*window, "stopButton");
    startRun();
    EXPECT_EQ(light("trash"), "Running");
    EXPECT_TRUE(child<TWSpinner>(*window, "trashSpinner")->turning());
    EXPECT_FALSE(clean->isEnabled());
    EXPECT_TRUE(stop->isVisible());

    machine.launcher.ending = TWRecordingLauncher::Ending::OnALaterTurn;
    machine.launcher.endAll();
    EXPECT_TRUE(machine.waitFor([&] { return clean->isEnabled(); }));
    EXPECT_EQ(light("trash"), "Succeeded");
    EXPECT_FALSE(child<TWSpinner>(*window, "trashSpinner")->turning());
    EXPECT_EQ(line("trash"), "The Trash is empty");
    EXPECT_FALSE(stop->isVisible());
}

TEST_F(TWMainWindowTest, EscapeStopsARun)
{
    startRun();
    QTest::keyClick(window.get(), Qt::Key_Escape);
    EXPECT_TRUE(machine.waitFor([&] { return !delegate->running(); }));
    EXPECT_EQ(light("trash"), "Failed");
    EXPECT_EQ(machine.launcher.records.back(), "terminate");
}

TEST_F(TWMainWindowTest, ClosingDuringARunAsksAndThenStopsAndQuits)
{
    startRun();
    EXPECT_FALSE(window->close());
    EXPECT_FALSE(window->close()) << "and asks only once";
    ASSERT_EQ(machine.alerts.alerts.size(), 1U);
    EXPECT_EQ(machine.alerts.alerts[0].title, "Cleaning is still going on.");
    machine.alerts.answer(TWAnswer::Alternate);
    EXPECT_TRUE(delegate->running());

    EXPECT_FALSE(window->close());
    machine.alerts.answer(TWAnswer::Default);
    EXPECT_TRUE(machine.waitFor([&] { return !delegate->running(); }));
    EXPECT_EQ(machine.launcher.records.size(), 2U) << "nothing further was begun";
}

TEST_F(TWMainWindowTest, OnlyClosingTheMainWindowQuits)
{
    window->bringToFront(TWWindow::Results);
    EXPECT_TRUE(machine.waitFor([&] { return window->isKeyWindow(TWWindow::Results); }));
    QApplication::activeWindow()->close();
    EXPECT_TRUE(machine.waitFor([&] { return !window->isKeyWindow(TWWindow::Results); }));
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->close());
    QTimer::singleShot(3000, qApp, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0);
}

}
