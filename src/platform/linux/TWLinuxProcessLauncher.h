#pragma once

#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"
#include "platform/posix/TWDescriptor.h"

#include <sys/types.h>

#include <cstdint>
#include <unordered_map>

// Uses posix_spawn, which does not copy our page tables however large the process is, and one pidfd per child; the run
// loop watches one epoll descriptor for all of them. Installs no process-wide signal handler. Destroying the launcher
// kills abandoned children that are still running.
class TWLinuxProcessLauncher final : public TWProcessLauncher {
public:
    explicit TWLinuxProcessLauncher(TWRunLoop&);
    ~TWLinuxProcessLauncher();

    void shareLock(const std::weak_ptr<const TWHeldLock>& lock) override { sharedLock_ = lock; }
    std::unique_ptr<TWChildProcess> launch(const std::string& path, const std::vector<std::string>& arguments,
        const TWHeldFolder& workingFolder, Terminated) override;

private:
    class Child;

    // A child whose object was destroyed and that was asked to end, kept until it has ended.
    struct Abandoned {
        pid_t process = -1;
        TWDescriptor pidfd;
        std::unique_ptr<TWRunLoopHandle> patience;
    };

    void serveEvents();
    void abandon(std::uint64_t identifier, pid_t, TWDescriptor pidfd);
    void collectAbandoned();
    bool watch(int descriptor, std::uint64_t tag) const;

    TWRunLoop& loop_;
    const TWDescriptor epoll_;
    std::weak_ptr<const TWHeldLock> sharedLock_;
    std::unordered_map<std::uint64_t, Child*> children_; // each child removes itself
    std::unordered_map<std::uint64_t, Abandoned> abandoned_;
    std::uint64_t nextIdentifier_ = 0;
    std::unique_ptr<TWRunLoopHandle> watch_;
};
