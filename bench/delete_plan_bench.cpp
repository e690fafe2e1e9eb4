// What a long list of paths costs around its deletion: delete_plan_bench MODE [WHERE]
//
// memory FOLDER     plans to delete every entry of the folder: number of items, then bytes an item beyond its name
// guard FOLDER      looks at every entry and asks the deletion rules about it: milliseconds per 100,000
// keep FOLDER       the same with 1,000 paths in that folder on the keep list
// patterns FOLDER   the same with 1,000 names on the keep list
// looks FOLDER      nothing but one fstatat() for each entry: milliseconds per 100,000
// realpaths FOLDER  nothing but one realpath() for each entry: milliseconds per 100,000
// run               empties the Trash of the home: longest turn of the event loop in milliseconds
// stop WHEN         the same, stopped while planning, deleting or checking, or line for the line in the Trash row:
//                   milliseconds from the stop to the end of the job, then those of the longest turn
//
// Only the last children before a stop are real ones. All other paths are deleted in this process, so that a list of
// any length takes no longer than its handling.

#include "app/TWCleanerLines.h"
#include "app/TWTidewellAppDelegate.h"
#include "cleaners/TWFilesCleaner.h"
#include "cleaners/TWFilesPlanner.h"
#include "cleaners/TWTrashCleaner.h"
#include "platform/linux/TWLinuxApplications.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxFolderWatcher.h"
#include "platform/linux/TWLinuxLogSources.h"
#include "platform/linux/TWLinuxMountTable.h"
#include "platform/linux/TWLinuxOpenFiles.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/linux/TWLinuxPreferenceFiles.h"
#include "platform/linux/TWLinuxProcessLauncher.h"
#include "platform/posix/TWFileUserDefaults.h"
#include "platform/posix/TWPosixOwnFiles.h"
#include "platform/qt/TWQtRunLoop.h"
#include "turns.h"

#include <QCoreApplication>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

class Launcher final : public TWProcessLauncher {
public:
    explicit Launcher(TWRunLoop& runLoop)
        : runLoop_(runLoop)
        , children_(runLoop)
    {
    }

    std::unique_ptr<TWChildProcess> launch(const std::string& path, const std::vector<std::string>& arguments,
        const TWHeldFolder& folder, Terminated terminated) override
    {
        if (launched_++ >= withoutChildren)
            return children_.launch(path, arguments, folder, std::move(terminated));
        unlinkat(folder.descriptor(), arguments.back().c_str(), 0);
        return std::make_unique<NoChild>(runLoop_, std::move(terminated));
    }

    std::size_t withoutChildren = std::numeric_limits<std::size_t>::max(); // the first so many paths

private:
    class NoChild final : public TWChildProcess {
    public:
        NoChild(TWRunLoop& runLoop, Terminated terminated)
            : end_(runLoop.after(TWRunLoop::Duration(0), [call = std::move(terminated)] { call({}); }))
        {
        }
        void terminate() override { }
        void kill() override { }

    private:
        std::unique_ptr<TWRunLoopHandle> end_;
    };

    TWRunLoop& runLoop_;
    TWLinuxProcessLauncher children_;
    std::size_t launched_ = 0;
};

struct World {
    TWPlaces places = TWLinuxPlaces();
    TWQtRunLoop runLoop;
    TWLinuxFileSystem fileSystem;
    TWLinuxMountTable mountTable;
    Launcher launcher{ runLoop };
    TWDeletionGuard guard{ places, fileSystem, mountTable, places.dataHome + "/Tidewell" };
    TWDeletionTools tools{ runLoop, launcher, fileSystem, guard, places };
    TWPosixOwnFiles ownFiles;
    TWFileUserDefaults defaults{ ownFiles, runLoop, places.dataHome + "/no settings" };
    TWSettings settings{ defaults };
    TWLinuxApplications applications{ places, fileSystem, ownFiles, TWLinuxApplications::Session::current(places) };
    TWLinuxPreferenceFiles preferenceFiles;
    TWOtherPrograms programs{ applications, preferenceFiles };
    TWLinuxLogSources logSources;
    TWLinuxFolderWatcher folderWatcher;
    TWLinuxOpenFiles openFiles;
    TWLogKnowledge logs{ logSources, folderWatcher, openFiles };
};

// Empties the Trash. The turn in which the cleaner is destroyed belongs to it.
class Emptying final : private TWCleanerDelegate {
public:
    explicit Emptying(World& world)
        : runLoop_(world.runLoop)
        , cleaner_(std::make_unique<TWTrashCleaner>(TWCleanerContext{
              world.tools, world.settings, world.programs, world.logs, world.workspace, world.volumes }))
    {
        cleaner_->setDelegate(this);
    }

    std::function<void()> progressed = [] {};

    void run()
    {
        cleaner_->clean();
        QCoreApplication::exec();
    }
    void stop()
    {
        stopped_ = Clock::now();
        cleaner_->stop();
    }
    double untilEnd() const { return Milliseconds(ended_ - stopped_).count(); }

private:
    void cleanerProgress(TWCleaner&) override { progressed(); }
    void cleanerFinished(TWCleaner&) override
    {
        ended_ = Clock::now();
        next_ = runLoop_.after(TWRunLoop::Duration(0), [this] {
            cleaner_.reset();
            next_ = runLoop_.after(TWRunLoop::Duration(5), [] { QCoreApplication::exit(); });
        });
    }

    TWRunLoop& runLoop_;
    std::unique_ptr<TWCleaner> cleaner_;
    std::unique_ptr<TWRunLoopHandle> next_;
    Clock::time_point stopped_;
    Clock::time_point ended_;
};

std::size_t residentBytes()
{
    std::ifstream status("/proc/self/statm");
    std::size_t pages = 0;
    status >> pages >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::vector<TWFilesRule> rulesFor(const std::string& folder)
{
    return { TWFilesRule{ true, "", folder, TWFolderContents } };
}

void memory(World& world, const std::string& folder)
{
    TWFilesCleanerInfo info;
    info.filesArray = std::make_shared<std::vector<TWFilesRule>>(rulesFor(folder));
    TWFilesCleaner cleaner({ world.tools, world.settings, world.programs, world.logs, world.workspace, world.volumes });
    cleaner.setInfo(std::move(info));
    const auto before = residentBytes();
    TWPlan plan;
    const auto planning = cleaner.makePlan([](const TWPlan&) {},
        [&](TWPlan made) {
            plan = std::move(made);
            QCoreApplication::exit();
        });
    QCoreApplication::exec();
    const auto taken = residentBytes() - before;
    std::size_t names = 0;
    for (const auto& item : plan.items)
        names += item.name.size();
    const auto items = static_cast<double>(plan.items.size());
    std::printf("%zu %.1f\n", plan.items.size(), (static_cast<double>(taken) - static_cast<double>(names)) / items);
}

void printPer100000(Clock::time_point start, std::size_t paths)
{
    std::printf("%.2f\n", Milliseconds(Clock::now() - start).count() * 100'000 / static_cast<double>(paths));
}

// The worst case: the entries that are judged lie beside the kept ones.
void fillKeepList(World& world, const std::string& folder)
{
    TWKeepList list(std::in_place);
    for (int number = 0; number < 1000; ++number)
        list->push_back({ TWKeepEntry::Kind::FolderWithContents, folder + "/kept" + std::to_string(number) });
    world.guard.setKeepList(std::move(list));
}

void fillKeepListWithNames(World& world)
{
    TWKeepList list(std::in_place);
    for (int number = 0; number < 1000; ++number)
        list->push_back({ TWKeepEntry::Kind::Names, "*.kept" + std::to_string(number) });
    world.guard.setKeepList(std::move(list));
}

// Does what the background work of a cleaner does.
void judge(World& world, const std::string& folder)
{
    const auto rules = rulesFor(folder);
    const TWCancellation never;
    std::size_t paths = 0;
    const auto start = Clock::now();
    const TWPathPlanner pathPlanner(world.fileSystem, world.guard.rules());
    TWFilesPlanner planner(
        pathPlanner, world.places, rules, {}, [&](const TWPlan& part) { paths += part.items.size(); }, never);
    planner.plan();
    printPer100000(start, paths);
}

// Calls the function with the folder's descriptor and each name in it.
template <typename Function>
void forEachName(const std::string& path, Function function)
{
    const auto start = Clock::now();
    std::size_t paths = 0;
    DIR* const folder = opendir(path.c_str());
    while (const auto* entry = readdir(folder)) {
        function(dirfd(folder), entry->d_name);
        ++paths;
    }
    closedir(folder);
    printPer100000(start, paths);
}

void looks(const std::string& path)
{
    forEachName(path, [](int folder, const char* name) {
        struct stat found;
        fstatat(folder, name, &found, AT_SYMLINK_NOFOLLOW);
    });
}

void realpaths(const std::string& path)
{
    forEachName(path, [&path](int, const char* name) { std::free(realpath((path + "/" + name).c_str(), nullptr)); });
}

void run(World& world)
{
    const Turns turns(world.runLoop);
    Emptying(world).run();
    std::printf("%.1f\n", turns.longest());
}

void stopEmptying(World& world, std::string_view when)
{
    constexpr std::size_t Children = 20; // the latest before the stop
    const auto trashed = static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(world.places.trash + "/files"), {}));
    const auto at = when == "deleting" ? trashed / 2 : trashed;
    if (when == "deleting")
        world.launcher.withoutChildren = at - std::min(at, Children);
    const Turns turns(world.runLoop);
    Emptying emptying(world);
    std::size_t deleted = 0;
    std::unique_ptr<TWRunLoopHandle> timer;
    const auto stopAfter = [&](int milliseconds) {
        timer = world.runLoop.after(TWRunLoop::Duration(milliseconds), [&] { emptying.stop(); });
    };
    if (when == "planning")
        stopAfter(30);
    else
        emptying.progressed = [&] {
            if (++deleted == at)
                stopAfter(when == "checking" ? 2 : 0); // the check begins once the last path is deleted
        };
    emptying.run();
    std::printf("%.1f %.1f\n", emptying.untilEnd(), turns.longest());
}

// The end includes that of the work in the background.
void stopLine(std::unique_ptr<World> world)
{
    Clock::time_point stopped;
    double longestTurn = 0;
    {
        const Turns turns(world->runLoop);
        std::unique_ptr<TWRunLoopHandle> timer;
        std::unique_ptr<TWCleanerLines> lines;
        const auto stop = [&] {
            stopped = Clock::now();
            lines->pause();
            timer = world->runLoop.after(TWRunLoop::Duration(0), [] { QCoreApplication::exit(); });
        };
        const auto changed = [&](int position, const std::string&) {
            // A short list is through before the time; the rows after it are not asked for.
            const int before = TWCleanerPosition("trash") - position;
            if (before == 0 || before == 1)
                timer = world->runLoop.after(TWRunLoop::Duration(before * 30), stop);
        };
        lines = std::make_unique<TWCleanerLines>(TWCleanerContext{ world->tools, world->settings, world->programs,
                                                     world->logs, world->workspace, world->volumes },
            TWSettingsSources{ world->settings, world->places }, changed);
        lines->refresh();
        QCoreApplication::exec();
        longestTurn = turns.longest();
    }
    world.reset();
    std::printf("%.1f %.1f\n", Milliseconds(Clock::now() - stopped).count(), longestTurn);
}

}

int main(int count, char** arguments)
{
    QCoreApplication application(count, arguments);
    const std::string mode = count > 1 ? arguments[1] : "";
    const std::string where = count > 2 ? arguments[2] : "";
    auto world = std::make_unique<World>();
    if (mode == "memory" && !where.empty())
        memory(*world, where);
    else if (mode == "guard" && !where.empty())
        judge(*world, where);
    else if (mode == "keep" && !where.empty()) {
        fillKeepList(*world, where);
        judge(*world, where);
    } else if (mode == "patterns" && !where.empty()) {
        fillKeepListWithNames(*world);
        judge(*world, where);
    } else if (mode == "looks" && !where.empty())
        looks(where);
    else if (mode == "realpaths" && !where.empty())
        realpaths(where);
    else if (mode == "run")
        run(*world);
    else if (mode == "stop" && where == "line")
        stopLine(std::move(world));
    else if (mode == "stop" && (where == "planning" || where == "deleting" || where == "checking"))
        stopEmptying(*world, where);
    else
        return 2;
}
