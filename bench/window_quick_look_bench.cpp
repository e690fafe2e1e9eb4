// Shows each file of a folder in the preview, one after the other. For each prints its name, the milliseconds until all
// of it is there, and those of the longest turn of the event loop.

#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/qt/TWQtRunLoop.h"
#include "turns.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWSpinner.h"
#include "ui/windows/TWQuickLookWindow.h"

#include <QApplication>

#include <cstdio>
#include <filesystem>
#include <set>

int main(int count, char** arguments)
{
    const QApplication application(count, arguments);
    if (count != 2)
        return 2;
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1]))
        files.insert(entry.path());
    TWQtRunLoop runLoop;
    const TWLinuxFileSystem fileSystem;
    const TWPlaces places = TWLinuxPlaces();
    QWidget opener;
    opener.show();
    auto* preview = new TWQuickLookWindow(runLoop, fileSystem, places, opener);
    const auto* spinner = preview->findChild<TWSpinner*>();
    for (const auto& file : files) {
        const Turns turns(runLoop);
        const auto begun = runLoop.now();
        preview->showFile(file);
        while (spinner->isVisible())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const std::chrono::duration<double, std::milli> taken = runLoop.now() - begun;
        preview->resize(preview->size() - QSize(40, 0)); // a long text is laid out anew
        runLoop.turn(TWRunLoop::Duration(100));
        preview->repaint();
        runLoop.turn(TWRunLoop::Duration(100));
        std::printf("%s\t%.1f\t%.1f\n", std::filesystem::path(file).filename().c_str(), taken.count(), turns.longest());
    }
    delete preview;
}
