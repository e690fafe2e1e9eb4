#pragma once

#include <csignal>

// Blocks SIGHUP, SIGINT and SIGTERM for the whole life of the process, so that a request to end takes effect between
// two steps and never in the middle of one.
class TWHeldSignals final {
public:
    TWHeldSignals();

    // True if one of the signals has arrived. Costs one short system call.
    bool pending() const;

    // Delivers a pending signal, which ends the process, so the parent sees the signal instead of an exit status.
    // Returns only if none is pending.
    void release();

private:
    sigset_t signals_;
};
