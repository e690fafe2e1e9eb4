#pragma once

#include "platform/TWRunLoop.h"
#include "platform/posix/TWDescriptor.h"

// Notices that something was mounted or unmounted. Main thread.
class TWLinuxMountWatch final : public TWRunLoopHandle {
public:
    // Calls the function one second after the first change that it has not been called for. The call may destroy this
    // object.
    TWLinuxMountWatch(TWRunLoop&, std::function<void()> changed);

private:
    void gather();
    void report();

    TWRunLoop& runLoop_;
    const std::function<void()> changed_;
    TWDescriptor table_;
    TWDescriptor readableOnChange_;
    std::unique_ptr<TWRunLoopHandle> events_;
    std::unique_ptr<TWRunLoopHandle> gathering_;
};
