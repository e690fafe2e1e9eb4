// Pictures of the windows for people to look at: TIDEWELL_SCREENSHOTS=FOLDER tests_ui --gtest_filter=*Screenshots*

#include "TWUITestSupport.h"
#include "ui/TWMainWindow.h"
#include "ui/TWQtAlerts.h"
#include "ui/TWResultsWindow.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPalette>

using namespace TWUITest;

namespace {

QPalette darkPalette()
{
    QPalette palette(QColor(49, 52, 57), QColor(43, 46, 51));
    palette.setColor(QPalette::Base, QColor(30, 32, 36));
    palette.setColor(QPalette::Highlight, QColor(61, 126, 190));
    return palette;
}

QPalette highContrastPalette()
{
    QPalette palette(Qt::white, Qt::black, Qt::white, Qt::black, Qt::white, Qt::white, Qt::white, Qt::black, Qt::black);
    palette.setColor(QPalette::Highlight, Qt::yellow);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    return palette;
}

QPalette paletteNamed(const std::string& name)
{
    return name == "dark" ? darkPalette() : name == "contrast" ? highContrastPalette() : QPalette(QColor(239, 239, 239));
}

class TWScreenshots : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        if (!qEnvironmentVariableIsSet("TIDEWELL_SCREENSHOTS"))
            GTEST_SKIP();
        QApplication::setPalette(paletteNamed(GetParam()));
    }
    void TearDown() override { QApplication::setPalette(QPalette()); }

    void grab(QWidget& window, const char* name)
    {
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        QElapsedTimer spinning;
        spinning.start();
        EXPECT_TRUE(machine.waitFor([&] { return spinning.elapsed() > 200; }));
        const auto scale = window.devicePixelRatioF() > 1 ? "-2x" : "";
        const auto file = QString("%1/%2-%3%4.png").arg(qEnvironmentVariable("TIDEWELL_SCREENSHOTS"), name, GetParam(), scale);
        EXPECT_TRUE(window.grab().save(file));
    }

    Machine machine;
};

TEST_P(TWScreenshots, AllWindows)
{
    for (const auto* name : {"a", "b", "c"})
        machine.root.write(std::string("home/.local/share/Trash/files/") + name, std::string(800'000, 'x'));
    const std::string rule = "<dict><key>Active</key><true/></dict>";
    machine.root.write("home/.local/share/Tidewell/FilesRules.plist", "<plist><array>" + rule + rule + "<dict/></array></plist>");
    TWTidewellAppDelegate delegate(machine.platform, TWLaunchKind::Window);
    delegate.settings().set(TWKey::TrashCleaner, true);
    delegate.settings().set(TWKey::FilesCleaner, true);
    TWMainWindow window(delegate);
    delegate.applicationDidFinishLaunching();
    grab(window, "main-idle");
    delegate.clean();
    grab(window, "main-running");
    delegate.stop();
    EXPECT_TRUE(machine.waitFor([&] { return !delegate.running(); }));
    window.showLight(TWCleanerPosition("files"), TWLight::Green);
    grab(window, "main-ended");

    auto& results = delegate.resultsWindowController();
    TWResultsWindow resultsWindow(results, resourceFolder() + "/icons");
    grab(resultsWindow, "results");
    results.addMessage("  \xE2\x80\xA2 /home/ada/" + std::string(150, 'm') + "/the-end.txt", TWMessageType::Information);
    results.addMessage("All files specified have been deleted.", TWMessageType::Success);
    grab(resultsWindow, "results-all-kinds");
    results.removeAllMessages();
    grab(resultsWindow, "results-empty");

    TWQtAlerts alerts;
    alerts.setWindow(&window);
    const auto welcome = machine.fileSystem.read(machine.bundle.resourcePath("Welcome.txt"), 100'000).bytes;
    alerts.show({"Welcome to Tidewell!", welcome, "I Understand", ""}, [](TWAnswer) { });
    grab(*child<QMessageBox>(window, "alertMessageBox"), "welcome");
}

INSTANTIATE_TEST_SUITE_P(Palettes, TWScreenshots, testing::Values("light", "dark", "contrast"));

}
