#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

// Owns a timer, a watch or a background task. Destroying the handle ends it and guarantees that no further call is
// made.
class TWRunLoopHandle {
public:
    virtual ~TWRunLoopHandle() = default;
};

// Tells background work that its result is no longer wanted. Background work checks it at least every few milliseconds.
// Any thread.
class TWCancellation {
public:
    void cancel() { cancelled_.store(true, std::memory_order_relaxed); }
    bool cancelled() const { return cancelled_.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> cancelled_{ false };
};

// The event loop: time, timers, background work and calls back to the main thread. All operations except post() must be
// called on the main thread, and all functions passed to it are called there, except the work of inBackground().
class TWRunLoop {
public:
    using Duration = std::chrono::milliseconds;
    using Clock = std::chrono::steady_clock;

    virtual ~TWRunLoop() = default;

    virtual Clock::time_point now() const = 0;

    // Calls the function once after the given time: never from inside after(), even if the time is 0.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> after(Duration, std::function<void()>) = 0;

    // Calls the function repeatedly, the first time after one interval.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> every(Duration interval, std::function<void()>) = 0;

    // Any thread. Calls the function once on a later turn, in the order of posting. What the function refers to must
    // still exist then.
    virtual void post(std::function<void()>) = 0;

    // Runs work on another thread and then calls finished on the main thread. The work uses copies only, and the
    // functions it posts check the cancellation first. Destroying the handle cancels the work: finished is not called,
    // and the destructor does not wait for the work to end. The run loop's destructor does wait.
    using Work = std::function<void(const std::shared_ptr<const TWCancellation>&)>;
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> inBackground(Work, std::function<void()> finished) = 0;

    // Calls the function whenever the descriptor, which is not owned, can be read without blocking.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> whenReadable(int descriptor, std::function<void()>) = 0;

    // Handles the pending events, or waits for the next one, but no longer than the given time.
    virtual void turn(Duration longest) = 0;
};
