#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "cli/TWTerminal.h"

// `tidewell clean`: one run, shown on the terminal. Main thread.
class TWCleanCommand final {
public:
    TWCleanCommand(TWTidewellAppDelegate&, TWTerminal&, const TWInvocation&);

    // Starts the run. ended gets the exit status, possibly within this call.
    void start(std::function<void(int status)> ended);

    // After SIGINT or SIGTERM: the run ends with the truth in its lines.
    void interrupt();

private:
    void finish(TWRunOutcome);

    TWTidewellAppDelegate& delegate_;
    TWTerminal& terminal_;
    const TWInvocation& invocation_;
    bool interrupted_ = false;
    std::function<void(int)> ended_;
};
