#pragma once

#include <csignal>

// Holds back SIGHUP, SIGINT and SIGTERM for the whole life of the process, so that a request to end takes effect
// between two steps and never in the middle of one.
class TWHeldSignals final {
public:
    TWHeldSignals();

    // Whether one of the signals has arrived. Costs one short system call.
    bool pending() const;

    // Lets a pending signal through, which ends the process: the parent then sees the signal instead of an exit status.
    // Returns only if nothing is pending.
    void release();

private:
    sigset_t signals_;
};
