// Works with the logs in one folder, which stands for the system's: window_logs_bench MODE FOLDER
//
// bare    a recursive loop of readdir() and fstatat() over the folder: milliseconds
// read    the first tree, as the sheet asks for it: milliseconds until it is there
// memory  bytes for each entry of the tree
// sheet   opens the sheet, filters, checks, and lets a file be written in each folder: for each step its name, the
//         milliseconds that it took and those of the longest turn of the event loop
// expanded  the same with every folder expanded
// reload  a file is written in one of the folders: milliseconds of CPU time, of all threads, until the tree shows it
// merge   10,000 saved nodes, then 100,000, are merged with as many found ones: microseconds for each

#include "editors/TWLogsWindowController.h"
#include "turns.h"
#include "ui/sheets/TWSheet.h"
#include "ui/sheets/TWSheetTable.h"
#include "window_world.h"

#include <QApplication>
#include <QLineEdit>
#include <QTreeView>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

namespace {

using Clock = TWRunLoop::Clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double processMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Closes the descriptor.
std::size_t walk(int folder)
{
    DIR* const list = fdopendir(folder);
    std::size_t found = 0;
    while (const auto* entry = readdir(list)) {
        struct stat look { };
        if (!std::strcmp(entry->d_name, ".") || !std::strcmp(entry->d_name, "..")
            || fstatat(folder, entry->d_name, &look, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        ++found;
        if (S_ISDIR(look.st_mode))
            found += walk(openat(folder, entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    }
    closedir(list);
    return found;
}

std::size_t residentBytes()
{
    std::ifstream status("/proc/self/statm");
    std::size_t pages = 0;
    status >> pages >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t entriesIn(const TWLogsTree::Level& level)
{
    std::size_t entries = level.size();
    for (const auto& node : level)
        entries += node->children ? entriesIn(*node->children) : 0;
    return entries;
}

TWPlaces placesWith(const std::string& folder)
{
    auto places = TWLinuxPlaces();
    places.systemLogs = folder;
    return places;
}

class Logs final {
public:
    explicit Logs(const std::string& folder)
        : folder_(folder)
        , world_(placesWith(folder))
    {
    }

    void read()
    {
        const auto start = Clock::now();
        controller_.sheetOpened();
        untilRead();
        std::printf("%.2f\n", millisecondsSince(start));
    }

    void memory()
    {
        const auto before = residentBytes();
        controller_.sheetOpened();
        untilRead();
        const auto entries = static_cast<double>(entriesIn(controller_.logsRoot()));
        std::printf("%.1f\n", static_cast<double>(residentBytes() - before) / entries);
    }

    // Without the second in which changes are gathered: nothing runs in it.
    void reload()
    {
        controller_.sheetOpened();
        untilRead();
        const auto before = processMilliseconds();
        std::ofstream(folder_ + "/folder 1/new.log") << "x";
        until([&] { return controller_.find(world_.places.abbreviate(folder_ + "/folder 1/new.log")) != nullptr; });
        std::printf("%.2f\n", processMilliseconds() - before);
    }

    void sheet(bool isExpanded)
    {
        QWidget window;
        window.show();
        std::unique_ptr<TWSheet> sheet = TWSheetNamed("logs")->make(world_.delegate.editors(), &window);
        auto* tree = sheet->findChild<QTreeView*>();
        auto* filter = sheet->findChild<QLineEdit*>();
        step("open", [&] {
            sheet->show();
            until([&] { return controller_.isReading(); });
        });
        if (isExpanded)
            step("expand all", [&] { tree->expandAll(); });
        step("filter", [&] { filter->setText("12"); });
        step("all again", [&] { filter->clear(); });
        step("check a folder", [&] { click(folder_ + "/folder 2"); });
        step("check a root", [&] { click("ALL_SYSTEM_LOGS"); });
        step("a new file in each folder", [&] {
            std::thread other([this] {
                for (int number = 0; std::filesystem::exists(folder_ + "/folder " + std::to_string(number)); ++number)
                    std::ofstream(folder_ + "/folder " + std::to_string(number) + "/new.log") << "x";
            });
            wait(2000);
            other.join();
        });
        step("read again", [&] { controller_.reloadLogs(); });
        step("close", [&] { sheet->hide(); });
    }

private:
    template <typename Condition>
    static void until(Condition condition)
    {
        while (!condition())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    void untilRead()
    {
        until([this] { return !controller_.isReading(); });
    }
    void wait(int milliseconds)
    {
        const auto end = world_.runLoop.after(TWRunLoop::Duration(milliseconds), [] {});
        const auto start = Clock::now();
        until([&] { return millisecondsSince(start) >= milliseconds; });
    }
    void click(const std::string& path)
    {
        auto* const node = controller_.find(world_.places.abbreviate(path));
        controller_.setObjectValue(*node, TWLogChecked);
    }
    template <typename Action>
    void step(const char* name, Action action)
    {
        const Turns turns(world_.runLoop);
        const auto start = Clock::now();
        action();
        untilRead();
        const auto taken = millisecondsSince(start);
        wait(300); // what is painted and counted after it belongs to it
        std::printf("%s\t%.1f\t%.1f\n", name, taken, turns.longest());
    }

    const std::string folder_;
    WindowWorld world_;
    TWLogsWindowController& controller_ = world_.delegate.editors().get<TWLogsWindowController>();
};

TWLogsRecord saved(int number)
{
    const auto name = "log " + std::to_string(1'000'000 + number);
    return { name, "/var/log/" + name, TWLogChecked, std::nullopt };
}

double mergeMicroseconds(int nodes)
{
    TWLogsRecord root{ "System Logs", std::string(TWAllSystemLogs), TWLogMixed, std::vector<TWLogsRecord>() };
    TWLogsTree::Level level;
    for (int number = 0; number < nodes; ++number) {
        root.children->push_back(saved(number));
        auto found = std::make_unique<TWLogsNode>();
        found->item = root.children->back().item;
        level.push_back(std::move(found));
    }
    TWLogsTree::Level fresh;
    fresh.push_back(TWLogsNode::makeRoot(TWLogsNode::Root::System, "/var/log"));
    fresh.back()->setChildren(std::move(level));
    TWLogsTree tree("/var/log");
    const auto start = Clock::now();
    tree.load({ root });
    tree.merge(std::move(fresh), [](const TWLogsNode&) { return TWLogsNode::State::Vanished; });
    return millisecondsSince(start) * 1000 / nodes;
}

}

int main(int count, char** arguments)
{
    const QApplication application(count, arguments);
    if (count < 3)
        return 2;
    const std::string mode = arguments[1];
    if (mode == "bare") {
        const auto start = Clock::now();
        walk(open(arguments[2], O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        std::printf("%.2f\n", millisecondsSince(start));
        return 0;
    }
    if (mode == "merge") {
        std::printf("%.4f %.4f\n", mergeMicroseconds(10'000), mergeMicroseconds(100'000));
        return 0;
    }
    Logs logs(arguments[2]);
    if (mode == "read")
        logs.read();
    else if (mode == "memory")
        logs.memory();
    else if (mode == "reload")
        logs.reload();
    else
        logs.sheet(mode == "expanded");
}
