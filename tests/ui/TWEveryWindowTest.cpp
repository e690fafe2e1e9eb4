// What holds for every window and sheet alike.

#include "TWUITestSupport.h"
#include "ui/sheets/TWSheet.h"
#include "ui/sheets/TWSheetTable.h"
#include "ui/windows/TWQtAlerts.h"
#include "ui/windows/TWWindowSession.h"

#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>

using namespace TWUITest;

namespace {

class TWEveryWindowTest : public testing::Test {
protected:
    TWEveryWindowTest()
    {
        const QSignalSpy appeared(&session.mainWindow(), &TWMainWindow::appeared);
        delegate.applicationDidFinishLaunching();
        EXPECT_TRUE(QTest::qWaitFor([&] { return appeared.count() == 1; }));
    }

    // Calls the function with each window on screen in turn.
    void forEach(const std::function<void(QWidget&)>& call)
    {
        delegate.editors().get<TWFilesWindowController>().addRule({ true, "Rule", "~/path", TWItemItself });
        shown(session.mainWindow(), call);
        for (const auto* name : { "results", "help" }) {
            child<QAction>(session.mainWindow(), std::string(name) + "Action")->trigger();
            const auto windows = QApplication::topLevelWidgets();
            const auto found = std::find_if(windows.begin(), windows.end(),
                [&](const auto* each) { return each->objectName() == name + QString("Window"); });
            shown(**found, call);
        }
        for (const auto& row : TWSheetTable()) {
            auto& sheet = *session.sheet(row.editor);
            sheet.open();
            shown(sheet, call);
            sheet.close();
        }
        alerts.show({ "Title", std::string(2000, 'x'), "Yes", "No" }, [](TWAnswer) {});
        shown(*child<QDialog>(session.mainWindow(), "alertSheet"), call);
    }
    static void shown(QWidget& window, const std::function<void(QWidget&)>& call)
    {
        SCOPED_TRACE(window.objectName().toStdString());
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        call(window);
    }

    // In the order of Tab, from the first control round to it again. In a text, Tab visits the links first.
    static std::vector<QWidget*> walk(QWidget& window)
    {
        std::vector<QWidget*> visited{ window.focusWidget() };
        for (int presses = 0; presses < 50; ++presses) {
            QTest::keyClick(window.windowHandle(), Qt::Key_Tab);
            auto* focus = window.focusWidget();
            if (focus == visited.front() && visited.size() > 1)
                break;
            if (focus != visited.back())
                visited.push_back(focus);
        }
        return visited;
    }

    Machine machine;
    TWTidewellAppDelegate delegate{ machine.platform, TWLaunchKind::Window };
    TWQtAlerts alerts;
    TWWindowSession session{ delegate, alerts };
};

TEST_F(TWEveryWindowTest, TabReachesEveryControlInOrderAndEachHasANameAndARole)
{
    std::map<QString, QStringList> orders;
    forEach([&](QWidget& window) {
        const auto walked = walk(window);
        for (const auto* widget : walked)
            orders[window.objectName()].append(widget->objectName());
        const std::set<const QWidget*> visited(walked.begin(), walked.end());
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
    // From the content of a sheet to OK or Save, and then to the others.
    EXPECT_EQ(orders["filesSheet"],
        QStringList({ "filesTableView", "addToolButton", "removeToolButton", "okPushButton",
            "restoreDefaultsPushButton", "helpPushButton" }));
    EXPECT_EQ(orders["dictionarySheet"],
        QStringList({ "wordLineEdit", "savePushButton", "cancelPushButton", "helpPushButton" }));
}

// Pictures for people to look at: TIDEWELL_SCREENSHOTS=FOLDER tests_ui --gtest_filter=*Pictures
TEST_F(TWEveryWindowTest, Pictures)
{
    const auto folder = qEnvironmentVariable("TIDEWELL_SCREENSHOTS");
    if (folder.isEmpty())
        GTEST_SKIP() << "no folder for them was named";
    delegate.editors().get<TWFilesWindowController>().applyDefaults();
    forEach([&](QWidget& window) {
        for (const auto& [theme, color] :
            { std::pair("dark", QColor(49, 52, 57)), { "light", QColor(239, 239, 239) } }) {
            QApplication::setPalette(QPalette(color));
            EXPECT_TRUE(window.grab().save(folder + "/" + window.objectName() + "-" + theme + ".png"));
        }
    });
}

// The test ui/small-screen runs this one on a screen of 1280 x 800 pixels at 200 %.
TEST_F(TWEveryWindowTest, FitsTheScreenWithItsButtonsInSight)
{
    const auto available = QGuiApplication::primaryScreen()->availableGeometry();
    const std::set<QString> buttons{ "cleanButton", "okPushButton", "savePushButton", "defaultButton", "saveButton" };
    forEach([&](QWidget& window) {
        EXPECT_LT(window.width(), available.width());
        EXPECT_LT(window.height(), available.height());
        for (const auto* button : window.findChildren<QPushButton*>()) {
            const QRect place(button->mapTo(&window, QPoint()), button->size());
            EXPECT_TRUE(!buttons.contains(button->objectName()) || window.rect().contains(place))
                << button->objectName().toStdString();
        }
    });
}

}
