#include "platform/linux/TWLinuxRunningCopies.h"

#include "platform/linux/TWLinuxPidfd.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <ctime>

namespace {

constexpr int MostLooksWhileKilling = 20; // a program that starts others faster than they can be stopped is left

constexpr std::int64_t Second = 1'000'000'000; // in nanoseconds

std::int64_t now(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return std::int64_t(time.tv_sec) * Second + time.tv_nsec;
}

// ":0" and ":0.0" are the same display.
std::string_view displayWithoutScreen(const char* display)
{
    const std::string_view text = display ? display : "";
    return text.substr(0, text.find('.', text.find(':') == text.npos ? 0 : text.find(':')));
}

// The start of a process, in nanoseconds since 1970 UTC.
std::int64_t timeOfStart(std::uint64_t start)
{
    const auto ticks = static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
    return now(CLOCK_REALTIME) - now(CLOCK_BOOTTIME)
        + static_cast<std::int64_t>(
            start / ticks * std::uint64_t(Second) + start % ticks * std::uint64_t(Second) / ticks);
}

}

TWLinuxRunningCopies::TWLinuxRunningCopies(MakeList makeList, std::string desktopPlugIn)
    : makeList_(std::move(makeList))
    , desktop_(std::move(desktopPlugIn))
{
}

// Those that tell something about a listed application, once a second. Nothing if they are needed but have never been
// seen. Later they only add to what is known.
std::optional<std::vector<TWLinuxWindow>> TWLinuxRunningCopies::windows()
{
    const auto& all = listed_->all();
    const bool tells = std::any_of(
        all.begin(), all.end(), [](const TWLinuxListedApplication& each) { return !each.windowName.empty(); });
    const auto time = now(CLOCK_MONOTONIC);
    if (!tells || (hasSeenWindows_ && time - windowsAsked_ < Second))
        return std::vector<TWLinuxWindow>();
    windowsAsked_ = time;
    auto windows = desktop_.windows();
    if (!windows && hasSeenWindows_)
        return std::vector<TWLinuxWindow>();
    hasSeenWindows_ = windows.has_value();
    return windows;
}

std::optional<std::vector<TWRunningCopy>> TWLinuxRunningCopies::runningApplications(const TWCancellation& cancellation)
{
    if (!finder_) {
        listed_ = makeList_();
        finder_ = std::make_unique<TWLinuxCopyFinder>(*listed_);
    }
    const auto shown = windows();
    if (!shown || !finder_->look(*shown, cancellation))
        return std::nullopt;
    std::vector<TWRunningCopy> running;
    for (const auto& copy : finder_->copies()) {
        const auto& path = listed_->all()[copy.application].path;
        running.push_back({ path, copy.process, copy.stat.start, timeOfStart(copy.stat.start) });
    }
    return running;
}

const TWLinuxCopy* TWLinuxRunningCopies::find(const TWRunningCopy& asked) const
{
    if (!finder_)
        return nullptr;
    const auto& copies = finder_->copies();
    const auto found = std::find_if(copies.begin(), copies.end(), [&](const TWLinuxCopy& copy) {
        return copy.process == asked.process && copy.stat.start == asked.start
            && listed_->all()[copy.application].path == asked.application;
    });
    return found == copies.end() ? nullptr : &*found;
}

// Its windows cannot be seen then, as when Tidewell runs without a display.
bool TWLinuxRunningCopies::isOnOtherDisplay(const std::set<pid_t>& processes) const
{
    const auto ours = displayWithoutScreen(getenv("DISPLAY"));
    return std::any_of(processes.begin(), processes.end(), [&](pid_t process) {
        const auto* known = finder_->table().find(process);
        return known && !known->origin.display.empty() && displayWithoutScreen(known->origin.display.c_str()) != ours;
    });
}

// As long as it is not known whether a window has been asked, nothing else is tried: an application that may ask its
// user must not get SIGTERM.
bool TWLinuxRunningCopies::terminate(const TWRunningCopy& asked)
{
    const auto* copy = find(asked);
    if (!copy)
        return true;
    const auto processes = finder_->processes(*copy);
    const std::set<std::int64_t> own(processes.own.begin(), processes.own.end());
    const bool mayHaveWindows = isOnOtherDisplay(processes.own);
    auto isAsked = mayHaveWindows ? std::optional(false) : desktop_.closeWindows(own);
    if (isAsked == false)
        isAsked = desktop_.quitOverBus(own);
    if (isAsked == true)
        return true;
    if (!isAsked || mayHaveWindows)
        return false;
    for (const auto process : processes.own) {
        // A wrapper may not pass it on.
        if (process == copy->process || copy->evidence == TWLinuxEvidence::Started)
            signal(process, processes.starts.at(process), SIGTERM);
    }
    return true;
}

// Stops the processes first, so that none of them starts a new one, or one that has ended again.
void TWLinuxRunningCopies::forceTerminate(const TWRunningCopy& asked)
{
    const auto* found = find(asked);
    if (!found)
        return;
    const auto copy = *found; // a look makes new ones
    auto processes = finder_->processes(copy);
    std::set<pid_t> stopped;
    for (int looks = 0; looks < MostLooksWhileKilling && stopped.size() < processes.starts.size(); ++looks) {
        for (const auto& [process, start] : processes.starts) {
            if (stopped.insert(process).second)
                signal(process, start, SIGSTOP);
        }
        if (!finder_->look({}, TWCancellation()))
            break;
        finder_->addStarted(copy, processes);
    }
    for (const auto& [process, start] : processes.starts)
        signal(process, start, SIGKILL);
}

// Nothing if the process has ended or, in a sandbox, runs something outside of it.
void TWLinuxRunningCopies::signal(pid_t process, std::uint64_t start, int number) const
{
    const auto pidfd = TWLinuxOpenProcess(process);
    const auto folder = finder_->table().open(process);
    const auto stat = folder.stat();
    if (stat && stat->start == start && folder.isOfThisUser() && listed_->isInReach(folder))
        TWLinuxSendSignal(pidfd.get(), number);
}
