#pragma once

#include "platform/TWRunLoop.h"
#include "platform/posix/TWDescriptor.h"

#include <thread>

// Delivers SIGINT, SIGTERM and SIGHUP as events of the run loop, except those that were ignored when the program
// started, as under nohup. A process whose main thread cannot take such an event, because it waits for a terminal or a
// volume that does not answer, is ended.
class TWLinuxEndRequests final : public TWRunLoopHandle {
public:
    // Blocks the signals. Must be called before the first thread starts, because threads inherit the signal mask.
    static void hold();

    // After a signal has waited for the run loop for the time of patience, in milliseconds, the process ends.
    TWLinuxEndRequests(TWRunLoop&, std::function<void()> requested, int patience);
    ~TWLinuxEndRequests();

private:
    void watchTheMainThread() const;

    const int patience_;
    TWDescriptor signals_;
    TWDescriptor over_; // readable when the thread is to end
    std::atomic<unsigned> taken_ = 0; // how often the run loop has taken signals
    std::thread watcher_;
    std::unique_ptr<TWRunLoopHandle> watch_;
};
