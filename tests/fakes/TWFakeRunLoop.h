#pragma once

#include "platform/TWRunLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

// A run loop whose clock belongs to the test. Nothing happens but in turn(), runUntilIdle() and advance().
class TWFakeRunLoop final : public TWRunLoop {
public:
    // What inBackground() does: the work runs on a later turn of the main thread, or really beside it.
    enum class Background { LaterTurn, Thread };

    explicit TWFakeRunLoop(Background background = Background::LaterTurn)
        : background_(background)
    {
    }
    ~TWFakeRunLoop() override
    {
        for (auto& thread : threads_)
            thread.join();
    }

    Clock::time_point now() const override { return now_; }
    std::unique_ptr<TWRunLoopHandle> after(Duration time, std::function<void()> call) override
    {
        return addTimer(time, Duration(0), std::move(call));
    }
    std::unique_ptr<TWRunLoopHandle> every(Duration interval, std::function<void()> call) override
    {
        return addTimer(interval, std::max(interval, Duration(1)), std::move(call));
    }
    void post(std::function<void()> call) override
    {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(call));
        arrived_.notify_one();
    }
    std::unique_ptr<TWRunLoopHandle> inBackground(Work work, std::function<void()> finished) override
    {
        auto task = std::make_shared<Task>(Task {std::move(finished)});
        auto run = [this, task, work = std::move(work)] {
            work(task->cancellation);
            post([this, task] {
                --working_;
                if (!task->cancellation->cancelled())
                    task->call();
            });
        };
        ++working_;
        if (background_ == Background::Thread)
            threads_.emplace_back(std::move(run));
        else
            post(std::move(run));
        return std::make_unique<Handle>(task);
    }
    std::unique_ptr<TWRunLoopHandle> whenReadable(int descriptor, std::function<void()> call) override
    {
        auto task = std::make_shared<Task>(Task {std::move(call), {}, {}, descriptor});
        watches_.push_back(task);
        return std::make_unique<Handle>(task);
    }

    // With nothing waiting the clock moves to the next timer, or by the time given.
    void turn(Duration longest) override
    {
        if (serve())
            return;
        if (working_ > 0) {
            waitForPost();
            serve();
            return;
        }
        if (++idleTurns_ > 1'000'000) {
            std::fputs("TWFakeRunLoop: waiting for something that never comes\n", stderr);
            std::abort();
        }
        moveClock(now_ + longest);
        serve();
    }

    // Until nothing is waiting at this moment of the clock, background work included.
    void runUntilIdle()
    {
        for (int turns = 0; serve() || working_ > 0; ++turns) {
            if (turns > 1'000'000) {
                ADD_FAILURE() << "the run loop never becomes idle";
                return;
            }
            if (background_ == Background::Thread && working_ > 0)
                waitForPost();
        }
    }
    void advance(Duration time)
    {
        const auto end = now_ + time;
        for (runUntilIdle(); now_ < end; runUntilIdle())
            moveClock(end);
    }

    // Calls those who wait for the descriptor.
    void makeReadable(int descriptor)
    {
        for (const auto& watch : std::vector(watches_)) {
            if (watch->descriptor == descriptor && !watch->cancellation->cancelled())
                watch->call();
        }
    }

private:
    struct Task {
        std::function<void()> call;
        Clock::time_point due {};
        Duration interval {0};
        int descriptor = -1;
        std::shared_ptr<TWCancellation> cancellation = std::make_shared<TWCancellation>();
    };
    struct Handle final : TWRunLoopHandle {
        explicit Handle(std::shared_ptr<Task> given)
            : task(std::move(given))
        {
        }
        ~Handle() override { task->cancellation->cancel(); }
        std::shared_ptr<Task> task;
    };

    std::unique_ptr<TWRunLoopHandle> addTimer(Duration time, Duration interval, std::function<void()> call)
    {
        auto task = std::make_shared<Task>(Task {std::move(call), now_ + time, interval});
        timers_.push_back(task);
        return std::make_unique<Handle>(task);
    }

    // What waits at the beginning, and nothing that comes meanwhile. False when there was nothing.
    bool serve()
    {
        dropEnded();
        std::vector<std::function<void()>> posted;
        {
            const std::lock_guard lock(mutex_);
            posted.swap(posted_);
        }
        std::vector<std::shared_ptr<Task>> due;
        std::copy_if(timers_.begin(), timers_.end(), std::back_inserter(due), [&](const auto& t) { return t->due <= now_; });
        std::stable_sort(due.begin(), due.end(), [](const auto& a, const auto& b) { return a->due < b->due; });
        for (const auto& call : posted)
            call();
        for (const auto& timer : due)
            fire(*timer);
        const bool served = !posted.empty() || !due.empty();
        if (served)
            idleTurns_ = 0;
        return served;
    }
    static void fire(Task& timer)
    {
        if (timer.cancellation->cancelled())
            return;
        if (timer.interval == Duration(0))
            timer.cancellation->cancel();
        timer.due += timer.interval;
        timer.call();
    }
    void dropEnded()
    {
        const auto ended = [](const auto& task) { return task->cancellation->cancelled(); };
        std::erase_if(timers_, ended);
        std::erase_if(watches_, ended);
    }
    void moveClock(Clock::time_point latest)
    {
        dropEnded();
        for (const auto& timer : timers_)
            latest = std::min(latest, timer->due);
        now_ = std::max(now_, latest);
    }
    void waitForPost()
    {
        std::unique_lock lock(mutex_);
        arrived_.wait_for(lock, std::chrono::seconds(1), [this] { return !posted_.empty(); });
    }

    const Background background_;
    Clock::time_point now_ {std::chrono::hours(1)};
    int working_ = 0;
    int idleTurns_ = 0;
    std::vector<std::shared_ptr<Task>> timers_;
    std::vector<std::shared_ptr<Task>> watches_;
    std::vector<std::thread> threads_;
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<std::function<void()>> posted_;
};
