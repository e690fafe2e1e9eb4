#pragma once

#include "platform/TWWorkspace.h"
#include "platform/linux/TWLinuxCopyFinder.h"
#include "platform/linux/TWLinuxPluggedDesktop.h"

// Quits copies: politely by closing their windows, else over the message bus, else with SIGTERM, which is not polite to
// a program with windows. Processes are told from later ones with the same identifier by their starts.
class TWLinuxRunningCopies final : public TWRunningCopies {
public:
    // Makes the list on the first look, because that takes time. It may be called on any thread.
    using MakeList = std::function<std::unique_ptr<TWLinuxListedApplications>()>;

    TWLinuxRunningCopies(MakeList, std::string desktopPlugIn);

    std::optional<std::vector<TWRunningCopy>> runningApplications(const TWCancellation&) override;
    bool terminate(const TWRunningCopy&) override;
    void forceTerminate(const TWRunningCopy&) override;

private:
    const TWLinuxCopy* find(const TWRunningCopy&) const;
    std::optional<std::vector<TWLinuxWindow>> windows();
    bool isOnOtherDisplay(const std::set<pid_t>&) const;
    void signal(pid_t, std::uint64_t start, int number) const;

    const MakeList makeList_;
    std::unique_ptr<TWLinuxListedApplications> listed_;
    std::unique_ptr<TWLinuxCopyFinder> finder_;
    TWLinuxPluggedDesktop desktop_;
    bool hasSeenWindows_ = false;
    std::int64_t windowsAsked_ = 0; // when, on the monotonic clock
};
