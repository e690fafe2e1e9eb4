#pragma once

#include "platform/TWRunLoop.h"
#include "platform/posix/TWDescriptor.h"

// SIGINT, SIGTERM and SIGHUP as events of the run loop, except those that this program was started to ignore, as by
// nohup.
class TWLinuxEndRequests final : public TWRunLoopHandle {
public:
    // Before the first thread is started: threads inherit what is blocked.
    static void hold();

    TWLinuxEndRequests(TWRunLoop&, std::function<void()> requested);

private:
    TWDescriptor signals_;
    std::unique_ptr<TWRunLoopHandle> watch_;
};
