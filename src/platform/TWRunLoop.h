#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

// What a timer, a watch or a background task hangs on: destroying it ends it and guarantees silence afterwards.
class TWRunLoopHandle {
public:
    virtual ~TWRunLoopHandle() = default;
};

// Says to background work that nobody waits for it any more. Background work asks it at least every few milliseconds.
class TWCancellation {
public:
    void cancel() { cancelled_.store(true, std::memory_order_relaxed); }
    bool cancelled() const { return cancelled_.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> cancelled_{ false };
};

// Time, timers, turns of the event loop, background work and the way back to the main thread.
// Every operation but post() is for the main thread, and every function given here is called on the main thread, except
// the work of inBackground().
class TWRunLoop {
public:
    using Duration = std::chrono::milliseconds;
    using Clock = std::chrono::steady_clock;

    virtual ~TWRunLoop() = default;

    virtual Clock::time_point now() const = 0;

    // Calls once after the time. Never from within this call, even for a time of 0.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> after(Duration, std::function<void()>) = 0;

    // Calls again and again, the first time after one interval.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> every(Duration interval, std::function<void()>) = 0;

    // Any thread. Calls once on a later turn, in the order of posting. What the function uses must still live then.
    virtual void post(std::function<void()>) = 0;

    // Runs work on another thread and then, on the main thread, finished. Work uses copies only; what it posts asks the
    // cancellation first. Destroying the handle cancels: finished is not called any more, and the destructor does not
    // wait for work to end. The end of the run loop does.
    using Work = std::function<void(const std::shared_ptr<const TWCancellation>&)>;
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> inBackground(Work, std::function<void()> finished) = 0;

    // Calls whenever the descriptor (not owned) can be read without waiting.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> whenReadable(int descriptor, std::function<void()>) = 0;

    // Serves what is waiting, or waits for the next event, but no longer than the time given.
    virtual void turn(Duration longest) = 0;
};
