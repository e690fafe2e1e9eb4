// Pictures of all windows for people to look at: TIDEWELL_SCREENSHOTS=FOLDER tests_ui --gtest_filter=TWScreenshots*

#include "TWUITestSupport.h"
#include "ui/sheets/TWDictionarySheet.h"
#include "ui/sheets/TWFilesSheet.h"
#include "ui/windows/TWMainWindow.h"
#include "ui/windows/TWQtAlerts.h"
#include "ui/windows/TWResultsWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>

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
    Editors machine;
    machine.root.write("home/.local/share/Trash/files/item", std::string(800'000, 'x'));
    machine.userDefaults.values["TrashCleaner"] = true;
    TWTidewellAppDelegate delegate(machine.platform, TWLaunchKind::Window);
    TWMainWindow window(delegate);
    delegate.applicationDidFinishLaunching();
    grab(machine, window, "main-idle");
    window.clean();
    grab(machine, window, "main-running");
    TWResultsWindow results(delegate.resultsWindowController(), resourceFolder() + "/icons");
    grab(machine, results, "results");
    TWQtAlerts alerts;
    alerts.setWindow(&window);
    const auto welcome = machine.ownFiles.read(machine.bundle.resourcePath("Welcome.txt"), 100'000).bytes;
    alerts.show({ "Welcome to Tidewell!", welcome, "I Understand", "" }, [](TWAnswer) {});
    grab(machine, *child<QMessageBox>(window, "alertMessageBox"), "welcome");

    machine.files.applyDefaults();
    machine.files.addRule({ true, "Everything!", "/", TWItemItself });
    TWFilesSheet files(machine.files, machine.help, nullptr);
    grab(machine, files, "files");
    machine.dictionary.setWordDictionary({ "invoice", "tax return", "", std::string(150, 'w') });
    TWDictionarySheet dictionary(machine.dictionary, machine.help, nullptr);
    grab(machine, dictionary, "dictionary");
    grab(machine, machine.help, "help");
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
