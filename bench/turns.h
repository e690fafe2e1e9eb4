#pragma once

#include "platform/TWRunLoop.h"

#include <algorithm>

// Watches how long the turns of the event loop take while it exists, to a millisecond. Without a pause between the
// beats, the watch would keep a core from the work in the background.
class Turns final {
public:
    explicit Turns(TWRunLoop& runLoop)
    {
        heartbeat_ = runLoop.every(TWRunLoop::Duration(1), [this] {
            const auto now = TWRunLoop::Clock::now();
            longest_ = std::max(longest_, Milliseconds(now - lastBeat_));
            lastBeat_ = now;
        });
    }

    // In milliseconds.
    double longest() const { return longest_.count(); }

private:
    using Milliseconds = std::chrono::duration<double, std::milli>;

    Milliseconds longest_{ 0 };
    TWRunLoop::Clock::time_point lastBeat_ = TWRunLoop::Clock::now();
    std::unique_ptr<TWRunLoopHandle> heartbeat_;
};
