// What holds for every window and sheet alike.

#include "TWUITestSupport.h"
#include "editors/TWApplicationsWindowController.h"
#include "editors/TWLogsWindowController.h"
#include "editors/TWRecentItemsWindowController.h"
#include "editors/TWVolumesWindowController.h"
#include "ui/sheets/TWSheet.h"
#include "ui/sheets/TWSheetTable.h"
#include "ui/windows/TWQtAlerts.h"
#include "ui/windows/TWWindowSession.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTreeView>

using namespace TWUITest;

namespace {

class TWEveryWindowTest : public testing::Test {
protected:
    TWEveryWindowTest()
    {
        machine.root.write("home/.local/share/Trash/files/folder/inner", "x");
        machine.root.write("home/apprc", "[Recent Files]\nFile1=~/letter.txt\nFile2=~/photo.png\n");
        for (const auto* each : { "editor", "viewer", "player" })
            machine.applications.applications.push_back({ each, std::string("App ") + each, each,
                std::string("App ") + each, std::string("accessories-text-") + each, each, "" });
        machine.applications.preferences["editor"] = { machine.places.home + "/apprc" };
        writeLogs();
        machine.volumes.mount("/media/holiday pictures", "/dev/sdc1");
        machine.volumes.mount("/mnt/backup", "/dev/sdd1");
        machine.volumes.uses["/mnt/backup"] = { { "player (4711)" }, true };
        machine.volumes.space["/mnt/backup"] = 81'200'000'000;
        delegate.settings().set(TWKey::TrashCleaner, true);
        const QSignalSpy appeared(&session.mainWindow(), &TWMainWindow::appeared);
        delegate.applicationDidFinishLaunching();
        EXPECT_TRUE(QTest::qWaitFor([&] { return appeared.count() == 1; }));
    }

    // All that the tree of logs can show.
    void writeLogs()
    {
        for (const auto* each : { "auth.log", "auth.log.1", "backup/monday.log", "backup/tuesday.log.gz",
                 "cups/page_log", "empty.png", "syslog" })
            machine.root.write(std::string("var/log/") + each, std::string(5000, 'x') + '\n');
        machine.root.link("var/log/README", "../../usr/share/doc/README");
        machine.root.write("home/.config/editor/logs/main.log", std::string("\0\1\2 not a text", 14));
        machine.logSources.sources = { { "Editor", machine.places.home + "/.config/editor/logs", true } };
        const auto log = [&](const std::string& path, std::int64_t active) {
            return TWLogsRecord{ std::string(TWPath::lastComponent(path)),
                machine.places.abbreviate(machine.root.path(path)), active, std::nullopt };
        };
        auto folder = log("var/log/backup", TWLogChecked);
        folder.children.emplace();
        const std::vector<TWLogsRecord> system{ log("var/log/auth.log.1", TWLogChecked), folder,
            log("var/log/old-daemon.log", TWLogChecked) };
        delegate.editors().get<TWLogsWindowController>().list().changeSaved([&](auto& records) {
            records = { { "System Logs", std::string(TWAllSystemLogs), TWLogMixed, system },
                { "notes.txt", "~/Documents/notes.txt", TWLogChecked, std::nullopt } };
            return true;
        });
    }

    // Calls the function with each window on screen in turn.
    void forEach(const std::function<void(QWidget&)>& call)
    {
        delegate.editors().get<TWFilesWindowController>().addRule({ true, "Rule", "~/path", TWItemItself });
        auto& recentItems = delegate.editors().get<TWRecentItemsWindowController>();
        recentItems.insertRule(0, { false, "App viewer", "~/viewed", true, "Unused" });
        recentItems.insertRule(0, { true, "App editor", "~/apprc", false, "Recent Files" });
        auto& applications = delegate.editors().get<TWApplicationsWindowController>();
        for (const auto* each : { "editor", "viewer", "/usr/bin/gone", "viewer" })
            applications.insertEntry(0, { each, std::string("App ") + each });
        auto& volumes = delegate.editors().get<TWVolumesWindowController>();
        volumes.list().edit([](auto& records) { records = { { true, "old stick", "/media/old stick" } }; });
        volumes.updateVolumesList();
        volumes.setActive(2, true);
        auto& results = delegate.resultsWindowController();
        results.addMessage({ "A rule was read.", TWMessageType::Information, false, 5 });
        results.addMessage({ "The Trash is now empty.", TWMessageType::Success, false, 2 });
        results.addMessage({ "Some files could not be deleted!", TWMessageType::Failure, false, 5 });
        session.mainWindow().refresh();
        machine.runLoop.runUntilIdle();
        shown(session.mainWindow(), call);
        for (const auto* name : { "results", "help", "preview" }) {
            child<QAction>(session.mainWindow(), std::string(name) + "Action")->trigger();
            const auto windows = QApplication::topLevelWidgets();
            const auto found = std::find_if(windows.begin(), windows.end(),
                [&](const auto* each) { return each->objectName() == name + QString("Window"); });
            machine.runLoop.advance(1s); // the preview counts its items only now and then
            shown(**found, call);
            if (name == std::string("preview"))
                showContents(**found, call);
        }
        for (const auto& row : TWSheetTable()) {
            auto& sheet = *session.sheet(row.editor);
            sheet.open();
            if (row.editor == std::string("logs"))
                expandLogs(sheet);
            machine.runLoop.runUntilIdle();
            shown(sheet, call);
            if (row.editor == std::string("recent-items"))
                showDiscovery(sheet, call);
            if (row.editor == std::string("applications"))
                showChooser(sheet, call);
            if (row.editor == std::string("logs"))
                showLook(sheet, call);
            sheet.close();
        }
        for (const auto* other : { "", "Quit Without Saving" }) {
            const std::string text(2000, 'x');
            alerts.show({ "Title", text, "Save and Quit", "Cancel", TWConfirming::IsHarmless, other }, [](TWAnswer) {});
            const QPointer<QDialog> alert(child<QDialog>(session.mainWindow(), "alertSheet"));
            shown(*alert, call);
            if (alert)
                alert->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    void showContents(const QWidget& preview, const std::function<void(QWidget&)>& call)
    {
        child<QWidget>(preview, "itemsTableView")->setFocus();
        child<QAction>(preview, "contentsAction")->trigger();
        machine.runLoop.runUntilIdle();
        auto* contents = child<QDialog>(preview, "contentsDialog");
        shown(*contents, call);
        contents->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void showChooser(TWSheet& sheet, const std::function<void(QWidget&)>& call)
    {
        sheet.open();
        child<QAbstractButton>(sheet, "addToolButton")->click();
        machine.runLoop.runUntilIdle();
        const QPointer<QDialog> chooser(child<QDialog>(sheet, "applicationChooser"));
        QTest::keyClicks(child<QLineEdit>(*chooser, "searchField"), "app");
        shown(*chooser, call);
        if (chooser)
            chooser->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void showDiscovery(TWSheet& sheet, const std::function<void(QWidget&)>& call)
    {
        showChooser(sheet, call);
        machine.alerts.open.clear();
        delegate.editors().get<TWRecentItemsWindowController>().addApplication(
            machine.applications.applications.front());
        machine.alerts.answer(TWAnswer::Default);
        machine.runLoop.runUntilIdle();
        shown(*child<QDialog>(sheet, "foundKeysWindow"), call);
        if (auto* window = sheet.findChild<QDialog*>("foundKeysWindow"))
            window->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void expandLogs(const TWSheet& sheet)
    {
        auto* tree = child<QTreeView>(sheet, "logsOutlineView");
        EXPECT_TRUE(machine.waitFor([&] { return tree->model()->rowCount() == 3; }));
        tree->keyboardSearch("backup");
        tree->expand(tree->currentIndex());
    }
    void showLook(TWSheet& sheet, const std::function<void(QWidget&)>& call)
    {
        sheet.open();
        expandLogs(sheet);
        auto* tree = child<QTreeView>(sheet, "logsOutlineView");
        tree->setCurrentIndex(tree->indexAbove(tree->currentIndex()));
        QTest::keyClick(tree, Qt::Key_Space);
        machine.runLoop.runUntilIdle();
        auto* look = child<QWidget>(sheet, "quickLookWindow");
        shown(*look, call);
        look->close();
    }
    static void shown(QWidget& window, const std::function<void(QWidget&)>& call)
    {
        SCOPED_TRACE(window.objectName().toStdString());
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        call(window);
    }

    // Presses the key often enough to come round to the first control again, or until the control has the focus. In a
    // text, Tab visits the links first.
    static std::set<const QWidget*> walk(QWidget& window, Qt::Key key, const QWidget* end = nullptr)
    {
        std::set<const QWidget*> visited;
        for (int presses = 0; presses < 50 && window.focusWidget() != end; ++presses) {
            visited.insert(window.focusWidget());
            QTest::keyClick(window.windowHandle(), key);
        }
        return visited;
    }

    struct SandboxedMachine : Machine {
        SandboxedMachine() { places.sandboxRoot = "/tmp/box"; }
    };
    SandboxedMachine machine;
    TWTidewellAppDelegate delegate{ machine.platform, TWLaunchKind::Window };
    TWQtAlerts alerts;
    TWFakeFileManager fileManager{ machine.runLoop };
    TWWindowSession session{ delegate, alerts, fileManager };
};

TEST_F(TWEveryWindowTest, TabReachesEveryControlInBothDirectionsAndEachHasANameAndARole)
{
    forEach([&](QWidget& window) {
        EXPECT_TRUE(window.windowTitle().contains("andbox /tmp/box")) << window.windowTitle().toStdString();
        auto visited = walk(window, Qt::Key_Tab);
        visited.erase(&window); // which may have the focus at first
        EXPECT_EQ(walk(window, Qt::Key_Backtab), visited);
        for (const auto* widget : visited)
            EXPECT_TRUE(widget && widget->isVisible() && widget->isEnabled());
        for (auto* widget : window.findChildren<QWidget*>()) {
            const bool takesTab = widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus);
            if (!takesTab || widget->focusProxy() || widget->window() != &window)
                continue;
            SCOPED_TRACE(widget->objectName().toStdString());
            EXPECT_TRUE(visited.contains(widget));
            auto* accessible = QAccessible::queryAccessibleInterface(widget);
            ASSERT_TRUE(accessible);
            EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty());
            EXPECT_TRUE(accessible->role() != QAccessible::NoRole && accessible->role() != QAccessible::Client);
        }
    });
}

// In the order of the buttons on every desktop.
TEST_F(TWEveryWindowTest, TabLeadsFromTheContentToTheDefaultButtonOfASheetAndItsKeysPressIt)
{
    for (const int layout : { 0, 1, 2, 3 }) {
        forEach([&](QWidget& window) {
            const auto buttons = window.findChildren<QPushButton*>();
            const auto found
                = std::find_if(buttons.begin(), buttons.end(), [](const auto* each) { return each->isDefault(); });
            // In the contents of a folder Return opens folders instead.
            if (!qobject_cast<QDialog*>(&window) || window.objectName() == "contentsDialog")
                return;
            window.setStyleSheet(QString("QDialogButtonBox { button-layout: %1; }").arg(layout));
            QCoreApplication::processEvents();
            ASSERT_NE(found, buttons.end());
            for (const auto* widget : walk(window, Qt::Key_Tab, *found))
                EXPECT_FALSE(qobject_cast<QDialogButtonBox*>(widget->parentWidget()))
                    << layout << widget->objectName().toStdString();
            ASSERT_EQ(window.focusWidget(), *found);
            const QPointer<QWidget> closed(&window); // an alert deletes itself
            const auto press
                = [&] { QTest::keyClick(window.windowHandle(), layout % 2 == 0 ? Qt::Key_Space : Qt::Key_Return); };
            press();
            const auto* message = closed ? closed->findChild<QLabel*>("messageBarLabel") : nullptr;
            if (message && message->isVisible())
                press(); // the first one only showed warnings that were new
            EXPECT_FALSE(closed && closed->isVisible());
        });
    }
}

struct Theme {
    const char* name;
    unsigned back, base, text, highlight, highlighted; // colours
};
constexpr Theme Themes[] = {
    { "dark", 0x31363b, 0x232629, 0xfcfcfc, 0x3daee9, 0xfcfcfc },
    { "contrast", 0x000000, 0x000000, 0xffffff, 0xffff00, 0x000000 },
    { "light", 0xefefef, 0xffffff, 0x000000, 0x308cc6, 0xffffff },
};

// Pictures for people to look at: TIDEWELL_SCREENSHOTS=FOLDER tests_ui --gtest_filter=*Pictures
TEST_F(TWEveryWindowTest, Pictures)
{
    const auto folder = qEnvironmentVariable("TIDEWELL_SCREENSHOTS");
    if (folder.isEmpty())
        GTEST_SKIP() << "no folder for them was named";
    delegate.editors().get<TWFilesWindowController>().applyDefaults();
    forEach([&](QWidget& window) {
        machine.runLoop.runUntilIdle();
        QCoreApplication::processEvents(); // so that the layouts follow
        for (const auto& theme : Themes) {
            QPalette palette(QColor::fromRgb(theme.back));
            for (const auto role : { QPalette::Text, QPalette::WindowText, QPalette::ButtonText }) {
                palette.setColor(role, QColor::fromRgb(theme.text));
                palette.setColor(QPalette::Disabled, role, Qt::gray);
            }
            palette.setColor(QPalette::Base, QColor::fromRgb(theme.base));
            palette.setColor(QPalette::Highlight, QColor::fromRgb(theme.highlight));
            palette.setColor(QPalette::HighlightedText, QColor::fromRgb(theme.highlighted));
            QApplication::setPalette(palette);
            QCoreApplication::processEvents();
            EXPECT_TRUE(window.grab().save(folder + "/" + window.objectName() + "-" + theme.name + ".png"));
        }
    });
    QApplication::setPalette({});
}

// The test ui/small-screen runs this one on a screen of 1280 x 800 pixels at 200 %.
TEST_F(TWEveryWindowTest, FitsTheScreenWithItsButtonsInSight)
{
    const auto available = QGuiApplication::primaryScreen()->availableGeometry();
    const std::set<QString> buttons{ "cleanButton", "okPushButton", "savePushButton", "defaultButton", "saveButton",
        "exportButton", "chooseButton", "createButton" };
    forEach([&](QWidget& window) {
        EXPECT_LT(window.width(), available.width());
        EXPECT_LT(window.height(), available.height());
        const auto smallest = window.minimumSizeHint(); // must fit 640 x 400 without the title bar
        EXPECT_TRUE(smallest.width() <= 640 && smallest.height() <= 370)
            << smallest.width() << "x" << smallest.height();
        for (const auto* button : window.findChildren<QPushButton*>()) {
            const QRect place(button->mapTo(&window, QPoint()), button->size());
            EXPECT_TRUE(!buttons.contains(button->objectName()) || window.rect().contains(place))
                << button->objectName().toStdString();
        }
    });
}

}
