// Pictures of all windows for people to look at: TIDEWELL_SCREENSHOTS=FOLDER tests_ui --gtest_filter=TWScreenshots*

#include "TWUITestSupport.h"
#include "ui/parts/TWRecordTable.h"
#include "ui/sheets/TWSheet.h"
#include "ui/windows/TWHelpWindow.h"
#include "ui/windows/TWQtAlerts.h"
#include "ui/windows/TWResultsWindow.h"
#include "ui/windows/TWWindowSession.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QToolButton>

using namespace TWUITest;

namespace {

void grab(Machine& machine, QWidget& window, const char* name)
{
    window.show();
    QElapsedTimer spinning;
    spinning.start();
    EXPECT_TRUE(machine.waitFor([&] { return spinning.elapsed() > 200; }));
    const auto scale = window.devicePixelRatioF() > 1 ? "-2x" : "";
    const auto theme = QApplication::palette().window().color().lightness() < 128 ? "dark" : "light";
    const auto file = QString("%1/%2-%3%4.png").arg(qEnvironmentVariable("TIDEWELL_SCREENSHOTS"), name, theme, scale);
    EXPECT_TRUE(window.grab().save(file));
}

void grabAll()
{
    Machine machine;
    machine.root.write("home/.local/share/Trash/files/item", std::string(800'000, 'x'));
    machine.userDefaults.values["TrashCleaner"] = true;
    TWTidewellAppDelegate delegate(machine.platform, TWLaunchKind::Window);
    TWQtAlerts alerts;
    TWWindowSession session(delegate, alerts);
    auto& window = session.mainWindow();
    delegate.applicationDidFinishLaunching();
    grab(machine, window, "main-idle");
    const auto welcome = machine.ownFiles.read(machine.bundle.resourcePath("Welcome.txt"), 100'000).bytes;
    alerts.show({ "Welcome to Tidewell!", welcome, "I Understand", "" }, [](TWAnswer) {});
    grab(machine, *child<QDialog>(window, "alertSheet"), "welcome");
    delete child<QDialog>(window, "alertSheet");
    alerts.show({ "Are you sure?", "This operation is not undoable.", "Yes", "No", TWConfirming::LosesSomething },
        [](TWAnswer) {});
    grab(machine, *child<QDialog>(window, "alertSheet"), "question");
    delete child<QDialog>(window, "alertSheet");

    auto& files = delegate.editors().get<TWFilesWindowController>();
    files.applyDefaults();
    files.addRule({ true, "Everything!", "/", TWItemItself });
    files.addRule({ true, "Far down", "~/" + std::string(90, 'd') + "/" + std::string(90, 'e') + "/end.txt", 1 });
    auto& filesSheet = *session.sheet("files");
    filesSheet.open();
    child<TWRecordTable>(filesSheet, "filesTableView")->showRow(1);
    child<QToolButton>(filesSheet, "removeToolButton")->click();
    grab(machine, filesSheet, "files");
    filesSheet.close();
    auto& dictionarySheet = *session.sheet("dictionary");
    dictionarySheet.open();
    delegate.editors().dictionary().setWordDictionary({ "invoice", "tax return", "", std::string(150, 'w') });
    grab(machine, dictionarySheet, "dictionary");
    dictionarySheet.close();

    files.applyDefaults();
    window.clean();
    machine.userDefaults.problemLine = "The settings file \"~/.config/Tidewell/Tidewell.plist\" could not be read.";
    window.refresh();
    grab(machine, window, "main-running");
    window.resize(1600, 700);
    grab(machine, window, "main-wide");
    TWResultsWindow results(delegate.resultsWindowController(), resourceFolder() + "/icons", "/");
    grab(machine, results, "results");
    TWHelpWindow help(machine.bundle);
    help.openAnchor("Files");
    grab(machine, help, "help");
}

TEST(TWScreenshots, AllWindows)
{
    if (!qEnvironmentVariableIsSet("TIDEWELL_SCREENSHOTS"))
        GTEST_SKIP();
    for (const auto& palette : { QPalette(QColor(49, 52, 57), QColor(43, 46, 51)), QPalette(QColor(239, 239, 239)) }) {
        QApplication::setPalette(palette);
        grabAll();
    }
}

}
