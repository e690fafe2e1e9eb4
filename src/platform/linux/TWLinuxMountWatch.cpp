#include "platform/linux/TWLinuxMountWatch.h"

#include <fcntl.h>
#include <sys/epoll.h>

namespace {

constexpr TWRunLoop::Duration GatheringTime = std::chrono::seconds(1);

}

// The table itself is always readable, and a change makes it exceptional once for each open file. An epoll descriptor
// that waits for that can be read exactly then, which is what the run loop knows.
TWLinuxMountWatch::TWLinuxMountWatch(TWRunLoop& runLoop, std::function<void()> changed)
    : runLoop_(runLoop)
    , changed_(std::move(changed))
    , table_(open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC))
    , readableOnChange_(epoll_create1(EPOLL_CLOEXEC))
{
    epoll_event exceptional{};
    exceptional.events = EPOLLPRI;
    if (epoll_ctl(readableOnChange_.get(), EPOLL_CTL_ADD, table_.get(), &exceptional) == 0)
        events_ = runLoop.whenReadable(readableOnChange_.get(), [this] { gather(); });
}

void TWLinuxMountWatch::gather()
{
    // The run loop's own look has usually taken the event already, so it does not matter what this one finds.
    epoll_event event;
    epoll_wait(readableOnChange_.get(), &event, 1, 0);
    if (!gathering_)
        gathering_ = runLoop_.after(GatheringTime, [this] { report(); });
}

void TWLinuxMountWatch::report()
{
    gathering_.reset();
    const auto changed = changed_;
    changed();
}
