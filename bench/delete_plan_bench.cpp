// What a long list costs around its deletion: delete_plan_bench MODE FOLDER
//   memory   plans to delete every entry of the folder; prints items, bytes per item beyond its path, longest turn in
//   ms guard    asks the deletion rules about every entry; prints milliseconds per 100,000 turns    empties the Trash
//   of a home, without children; prints the longest turn of the event loop in ms: in the run, and
//            while the quiet line is found out
//   stop     the same, stopped while planning, deleting and checking; prints how long each stop took, in ms

#include "app/TWCleanerLines.h"
#include "app/TWTidewellAppDelegate.h"
#include "cleaners/TWFilesCleaner.h"
#include "cleaners/TWPathPlanner.h"
#include "cleaners/TWTrashCleaner.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxMountTable.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/qt/TWQtRunLoop.h"

#include <QCoreApplication>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

// Deletes in this process, so that a list of any length takes no longer than its handling.
class UnlinkingLauncher final : public TWProcessLauncher {
public:
    explicit UnlinkingLauncher(TWRunLoop& runLoop)
        : runLoop_(runLoop)
    {
    }
    std::unique_ptr<TWChildProcess> launch(const std::string&, const std::vector<std::string>& arguments,
        const TWHeldFolder& folder, Terminated terminated) override
    {
        unlinkat(folder.descriptor(), arguments.back().c_str(), 0);
        return std::make_unique<Child>(runLoop_, std::move(terminated));
    }

private:
    class Child final : public TWChildProcess {
    public:
        Child(TWRunLoop& runLoop, Terminated terminated)
            : end_(runLoop.after(TWRunLoop::Duration(0), [call = std::move(terminated)] { call({}); }))
        {
        }
        void terminate() override { }
        void kill() override { }

    private:
        std::unique_ptr<TWRunLoopHandle> end_;
    };

    TWRunLoop& runLoop_;
};

// A settings file that holds nothing.
class NoDefaults final : public TWUserDefaults {
public:
    std::optional<TWValue> value(const std::string&) const override { return std::nullopt; }
    void setValue(const std::string&, const TWValue&) override { }
    void removeValue(const std::string&) override { }
    std::string synchronize() override { return ""; }
    std::string problem() const override { return ""; }
    std::string file() const override { return ""; }
};

struct World final : private TWCleanerDelegate {
    TWPlaces places = TWLinuxPlaces();
    TWQtRunLoop runLoop;
    TWLinuxFileSystem fileSystem;
    TWLinuxMountTable mountTable;
    UnlinkingLauncher launcher{ runLoop };
    TWDeletionGuard guard{ places, fileSystem, mountTable, places.dataHome + "/Tidewell" };
    TWDeletionTools tools{ runLoop, launcher, fileSystem, guard, places };
    NoDefaults defaults;
    TWSettings settings{ defaults };
    Milliseconds longestTurn{ 0 };

    World()
    {
        heartbeat_ = runLoop.every(TWRunLoop::Duration(0), [this] {
            const auto now = Clock::now();
            longestTurn = std::max(longestTurn, Milliseconds(now - lastBeat_));
            lastBeat_ = now;
        });
    }

    void run(TWCleaner& cleaner)
    {
        cleaner.setDelegate(this);
        lastBeat_ = Clock::now();
        cleaner.clean();
        QCoreApplication::exec();
    }

    std::function<void(TWCleaner&)> progressed = [](TWCleaner&) {};

private:
    void cleanerProgress(TWCleaner& cleaner) override { progressed(cleaner); }
    void cleanerFinished(TWCleaner&) override { QCoreApplication::exit(); }

    Clock::time_point lastBeat_ = Clock::now();
    std::unique_ptr<TWRunLoopHandle> heartbeat_;
};

std::size_t residentBytes()
{
    std::ifstream status("/proc/self/statm");
    std::size_t pages = 0;
    status >> pages >> pages;
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void memory(World& world, const std::string& folder)
{
    TWFilesCleanerInfo info;
    info.filesArray = std::make_shared<std::vector<TWFilesRule>>(1, TWFilesRule{ true, "", folder, TWFolderContents });
    TWFilesCleaner cleaner({ world.tools, world.settings });
    cleaner.setInfo(std::move(info));
    const auto before = residentBytes();
    TWPlan plan;
    const auto planning = cleaner.makePlan([](const TWPlan&) {},
        [&](TWPlan made) {
            plan = std::move(made);
            QCoreApplication::exit();
        });
    QCoreApplication::exec();
    std::size_t pathBytes = 0;
    for (const auto& item : plan.items)
        pathBytes += plan.path(item).size();
    const auto taken = static_cast<double>(residentBytes() - before) - static_cast<double>(pathBytes);
    std::printf("%zu %.1f %.1f\n", plan.items.size(), taken / static_cast<double>(plan.items.size()),
        world.longestTurn.count());
}

void judge(World& world, const std::string& path)
{
    int error = 0;
    const TWPathPlanner planner(world.fileSystem, world.guard.rules());
    const auto start = Clock::now();
    const auto folder = planner.folderThroughLinks(path, error);
    const auto open = planner.list(*folder, error);
    TWPlan plan;
    for (const auto& entry : open->entries())
        planner.add(plan, *folder, entry.name, open->look(entry));
    const Milliseconds taken = Clock::now() - start;
    std::printf("%.2f\n", taken.count() * 100'000 / static_cast<double>(plan.items.size()));
}

void turns(World& world)
{
    TWCleanerLines lines(
        { world.tools, world.settings }, { world.settings, world.places }, [](int position, const auto&) {
            if (position == TWCleanerPosition("trash"))
                QCoreApplication::exit();
        });
    lines.refresh();
    QCoreApplication::exec();
    lines.pause();
    const auto inLine = std::exchange(world.longestTurn, Milliseconds(0));
    TWTrashCleaner cleaner({ world.tools, world.settings });
    world.run(cleaner);
    std::printf("%.1f %.1f\n", world.longestTurn.count(), inLine.count());
}

// Prints how long it took from the stop to the end of the job. Each kind of stop needs a Trash of its own.
void stop(World& world, std::string_view when)
{
    TWTrashCleaner cleaner({ world.tools, world.settings });
    Clock::time_point stopped;
    const auto now = [&] {
        stopped = Clock::now();
        cleaner.stop();
    };
    const auto items = std::distance(
        std::filesystem::directory_iterator(world.places.trash + "/files"), std::filesystem::directory_iterator());
    std::ptrdiff_t deleted = 0;
    const auto at = when == "deleting" ? items / 2 : items;
    std::unique_ptr<TWRunLoopHandle> timer;
    if (when == "planning")
        timer = world.runLoop.after(TWRunLoop::Duration(30), now);
    world.progressed = [&](TWCleaner&) {
        // While the last one is deleted, the stop comes a moment later: during the check.
        if (++deleted == at && when != "planning")
            timer = world.runLoop.after(TWRunLoop::Duration(when == "checking" ? 2 : 0), now);
    };
    world.run(cleaner);
    std::printf("%.1f\n", Milliseconds(Clock::now() - stopped).count());
}

}

int main(int count, char** arguments)
{
    QCoreApplication application(count, arguments);
    const std::string_view mode = count > 1 ? arguments[1] : "";
    World world;
    if (mode == "memory" && count == 3)
        memory(world, arguments[2]);
    else if (mode == "guard" && count == 3)
        judge(world, arguments[2]);
    else if (mode == "turns")
        turns(world);
    else if (mode == "stop" && count == 3)
        stop(world, arguments[2]);
    else
        return 2;
}
