#pragma once

#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"

#include <cstdint>
#include <unordered_map>

// posix_spawn (no copy of our memory, however large it is), one pidfd per child, all of them behind one epoll
// descriptor that the run loop watches. No process-wide signal handler.
class TWLinuxProcessLauncher final : public TWProcessLauncher {
public:
    explicit TWLinuxProcessLauncher(TWRunLoop&);
    ~TWLinuxProcessLauncher();

    std::unique_ptr<TWChildProcess> launch(const std::string& path, const std::vector<std::string>& arguments,
        const TWHeldFolder& workingFolder, Terminated) override;

private:
    class Child;

    void serveEvents();
    bool watch(int descriptor, std::uint64_t tag) const;

    TWRunLoop& loop_;
    int epoll_ = -1;
    std::unordered_map<std::uint64_t, Child*> children_; // each removes itself
    std::uint64_t nextIdentifier_ = 0;
    std::unique_ptr<TWRunLoopHandle> watch_;
};
