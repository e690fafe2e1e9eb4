#pragma once

#include <algorithm>
#include <chrono>

// A moment by which something must be done.
class TWDeadline final {
public:
    using Duration = std::chrono::milliseconds;

    explicit TWDeadline(Duration fromNow)
        : end_(std::chrono::steady_clock::now() + fromNow)
    {
    }

    // What is left, but no more than the limit, and at least a second, so that what comes last still has a chance.
    Duration left(Duration limit) const
    {
        const auto left = std::chrono::duration_cast<Duration>(end_ - std::chrono::steady_clock::now());
        return std::max(Duration(1000), std::min(left, limit));
    }
    bool isOver() const { return std::chrono::steady_clock::now() >= end_; }

private:
    std::chrono::steady_clock::time_point end_;
};
