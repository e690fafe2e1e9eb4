// Deletes every entry of a folder as the program does, by a queue of child processes: delete_bench MODE FOLDER
//   queue          nothing else
//   ballast        while this process holds one gigabyte of memory
//   synchronously  one call of the deleter for each, waiting for its end
// Prints the seconds that the deletions took.

#include "deletion/TWFileDeleteQueue.h"
#include "platform/linux/TWLinuxMountTable.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/linux/TWLinuxProcessLauncher.h"
#include "platform/posix/TWPosixFileSystem.h"
#include "platform/qt/TWQtRunLoop.h"

#include <QCoreApplication>

#include <cstdio>
#include <string_view>

namespace {

std::vector<std::string> entriesOf(const TWFileSystem& fileSystem, const std::string& folder)
{
    std::vector<std::string> paths;
    if (const auto open = fileSystem.openFolder(folder, TWLinkAtEnd::DoNotFollow))
        for (const auto& entry : open->entries())
            paths.push_back(folder + "/" + std::string(entry.name));
    return paths;
}

class Queue final : private TWFileDeleteQueueDelegate {
public:
    Queue(const TWDeletionTools& tools, std::vector<std::string> paths)
        : queue_(tools)
    {
        queue_.setDelegate(this);
        queue_.addFilesFromArray(std::move(paths));
    }

    void run()
    {
        queue_.deleteFiles(TWAuthorization::No);
        QCoreApplication::exec();
    }

private:
    void fileDeleteQueueDone() override { QCoreApplication::exit(); }

    TWFileDeleteQueue queue_;
};

void deleteSynchronously(const TWDeletionTools& tools, const std::vector<std::string>& paths)
{
    TWFileDeleter deleter(tools);
    for (const auto& path : paths)
        deleter.deleteFile(path, TWPlainDelete, TWWaiting::UntilDone, TWAuthorization::No);
}

}

int main(int count, char** arguments)
{
    if (count != 3)
        return 2;
    const std::string_view mode = arguments[1];
    const QCoreApplication application(count, arguments);
    const TWPosixFileSystem fileSystem;
    const auto places = TWLinuxPlaces();
    TWLinuxMountTable mountTable;
    const TWDeletionGuard guard(places, fileSystem, mountTable, places.dataHome + "/Tidewell");
    TWQtRunLoop runLoop;
    TWLinuxProcessLauncher launcher(runLoop);
    const TWDeletionTools tools {runLoop, launcher, fileSystem, guard, places};

    auto paths = entriesOf(fileSystem, arguments[2]);
    const std::string ballast(mode == "ballast" ? std::size_t(1) << 30 : 0, 'x');
    const auto start = TWRunLoop::Clock::now();
    if (mode == "synchronously")
        deleteSynchronously(tools, paths);
    else
        Queue(tools, std::move(paths)).run();
    std::printf("%.6f\n", std::chrono::duration<double>(TWRunLoop::Clock::now() - start).count());
    // Looked at only now, so that it is held until here.
    return ballast.empty() || ballast.back() == 'x' ? 0 : 1;
}
