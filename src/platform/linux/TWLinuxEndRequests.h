#pragma once

#include "platform/TWRunLoop.h"
#include "platform/posix/TWDescriptor.h"

// Delivers SIGINT, SIGTERM and SIGHUP as events of the run loop, except those that were ignored when the program
// started, as under nohup.
class TWLinuxEndRequests final : public TWRunLoopHandle {
public:
    // Blocks the signals. Must be called before the first thread starts, because threads inherit the signal mask.
    static void hold();

    TWLinuxEndRequests(TWRunLoop&, std::function<void()> requested);

private:
    TWDescriptor signals_;
    std::unique_ptr<TWRunLoopHandle> watch_;
};
