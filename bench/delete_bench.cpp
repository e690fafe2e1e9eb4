// Deletes every entry of a folder like Tidewell, with a queue of child processes: delete_bench MODE FOLDER
//   queue          only the queue
//   ballast        while this process holds one gigabyte of memory
//   window         while the results window shows a line per entry
//   synchronously  without the queue: one call of the deleter per entry, waiting for its end
// Prints the seconds that the deletions took.

#include "deletion/TWFileDeleteQueue.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxMountTable.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/linux/TWLinuxProcessLauncher.h"
#include "platform/qt/TWQtFileManager.h"
#include "platform/qt/TWQtRunLoop.h"
#include "ui/windows/TWResultsWindow.h"

#include <QApplication>

#include <cstdio>
#include <string_view>

namespace {

std::vector<TWDeletionTarget> entriesOf(const TWFileSystem& fileSystem, const std::string& folder)
{
    std::vector<TWDeletionTarget> targets;
    int error = 0;
    const auto open = fileSystem.openFolder(folder, error);
    if (!open)
        return targets;
    for (const auto& entry : open->entries())
        targets.push_back(TWDeletionTarget::make({ folder, folder, open->identity() }, std::string(entry.name)));
    return targets;
}

class Queue final : private TWFileDeleteQueueDelegate {
public:
    Queue(const TWDeletionTools& tools, std::vector<TWDeletionTarget> targets)
        : messages_(tools.runLoop)
        , queue_(tools)
    {
        queue_.setDelegate(this);
        queue_.addFilesFromArray(std::move(targets));
    }

    TWResultsWindowController& messages() { return messages_; }

    void run()
    {
        queue_.deleteFiles(TWAuthorization::No);
        QCoreApplication::exec();
    }

private:
    void fileDeleteQueueProgressed(const TWReportLine& line) override
    {
        messages_.addMessage({ line.text, TWMessageType::Information });
    }
    void fileDeleteQueueDone() override { QCoreApplication::exit(); }

    TWResultsWindowController messages_;
    TWFileDeleteQueue queue_;
};

void deleteSynchronously(const TWDeletionTools& tools, const std::vector<TWDeletionTarget>& targets)
{
    TWFileDeleter deleter(tools);
    for (const auto& target : targets)
        deleter.deleteFile(target, TWPlainDelete, TWWaiting::UntilDone, TWAuthorization::No);
}

}

int main(int count, char** arguments)
{
    if (count != 3)
        return 2;
    const std::string_view mode = arguments[1];
    const bool showing = mode == "window";
    const std::unique_ptr<QCoreApplication> application(
        showing ? new QApplication(count, arguments) : new QCoreApplication(count, arguments));
    const TWLinuxFileSystem fileSystem;
    const auto places = TWLinuxPlaces();
    TWLinuxMountTable mountTable;
    TWDeletionGuard guard(places, fileSystem, mountTable, places.dataHome + "/Tidewell");
    TWQtRunLoop runLoop;
    TWLinuxProcessLauncher launcher(runLoop);
    const TWDeletionTools tools{ runLoop, launcher, fileSystem, guard, places };

    const auto targets = entriesOf(fileSystem, arguments[2]);
    Queue queue(tools, targets);
    TWQtFileManager fileManager({});
    std::unique_ptr<TWResultsWindow> window;
    if (showing) {
        window = std::make_unique<TWResultsWindow>(queue.messages(),
            TWResultsActions::Context{ runLoop, fileSystem, places, fileManager, {} },
            QString::fromStdString(places.resources + "/icons"), "/");
        window->show();
        QCoreApplication::processEvents();
    }
    const std::string ballast(mode == "ballast" ? std::size_t(1) << 30 : 0, 'x');
    const auto start = TWRunLoop::Clock::now();
    if (mode == "synchronously")
        deleteSynchronously(tools, targets);
    else
        queue.run();
    std::printf("%.6f\n", std::chrono::duration<double>(TWRunLoop::Clock::now() - start).count());
    // Read only here, so that the memory is held until now.
    return ballast.empty() || ballast.back() == 'x' ? 0 : 1;
}
