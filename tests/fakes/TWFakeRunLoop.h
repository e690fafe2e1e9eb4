#pragma once

#include "platform/TWRunLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <poll.h>
#include <thread>
#include <vector>

// A run loop whose clock belongs to the test. Nothing happens but in turn(), runUntilIdle() and advance(), where work
// in the background has its turn as well.
class TWFakeRunLoop final : public TWRunLoop {
public:
    Clock::time_point now() const override { return now_; }
    std::unique_ptr<TWRunLoopHandle> after(Duration time, std::function<void()> call) override
    {
        return add({ std::move(call), now_ + time });
    }
    std::unique_ptr<TWRunLoopHandle> every(Duration interval, std::function<void()> call) override
    {
        return add({ std::move(call), now_ + interval, std::max(interval, Duration(1)) });
    }
    std::unique_ptr<TWRunLoopHandle> whenReadable(int descriptor, std::function<void()> call) override
    {
        return add({ std::move(call), Clock::time_point::max(), Duration(1), descriptor });
    }
    void post(std::function<void()> call) override
    {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(call));
    }
    std::unique_ptr<TWRunLoopHandle> inBackground(Work work, std::function<void()> finished) override
    {
        auto task = std::make_shared<Task>(Task{ std::move(finished) });
        post([this, task, work = std::move(work)] {
            work(task->cancellation);
            post([task] {
                if (!task->cancellation->cancelled())
                    task->call();
            });
        });
        return std::make_unique<Handle>(task);
    }

    // With nothing waiting the clock moves to the next timer, or by the time given.
    void turn(Duration longest) override
    {
        if (serve())
            return;
        moveClock(now_ + longest);
        serve();
    }

    // Lets children, threads and real descriptors go on until the condition holds. The clock stands still.
    void runUntil(const std::function<bool()>& condition)
    {
        for (int turns = 0; !condition(); ++turns) {
            ASSERT_LT(turns, 20'000) << "waited for nothing";
            runUntilIdle();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    // Until nothing is waiting at this moment of the clock, background work included.
    void runUntilIdle()
    {
        while (serve()) { }
    }
    void advance(Duration time)
    {
        const auto end = now_ + time;
        for (runUntilIdle(); now_ < end; runUntilIdle())
            moveClock(end);
    }

private:
    struct Task {
        std::function<void()> call;
        Clock::time_point due{};
        Duration interval{ 0 }; // 0 for a call that is made once
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

    std::unique_ptr<TWRunLoopHandle> add(Task task)
    {
        tasks_.push_back(std::make_shared<Task>(std::move(task)));
        return std::make_unique<Handle>(tasks_.back());
    }

    // What waits at the beginning, and nothing that comes meanwhile. False when there was nothing.
    bool serve()
    {
        std::vector<std::function<void()>> posted;
        {
            const std::lock_guard lock(mutex_);
            posted.swap(posted_);
        }
        std::erase_if(tasks_, [](const auto& task) { return task->cancellation->cancelled(); });
        auto due = tasks_;
        std::erase_if(due, [this](const auto& task) { return !isDue(*task); });
        std::stable_sort(due.begin(), due.end(), [](const auto& a, const auto& b) { return a->due < b->due; });
        for (const auto& call : posted)
            call();
        for (const auto& task : due)
            fire(*task);
        return !posted.empty() || !due.empty();
    }
    bool isDue(const Task& task) const
    {
        pollfd wanted{ task.descriptor, POLLIN, 0 };
        return task.descriptor < 0 ? task.due <= now_ : poll(&wanted, 1, 0) == 1;
    }
    static void fire(Task& task)
    {
        if (task.cancellation->cancelled())
            return;
        if (task.interval == Duration(0))
            task.cancellation->cancel();
        else if (task.descriptor < 0)
            task.due += task.interval;
        task.call();
    }
    void moveClock(Clock::time_point latest)
    {
        for (const auto& task : tasks_)
            latest = task->cancellation->cancelled() ? latest : std::min(latest, task->due);
        now_ = std::max(now_, latest);
    }

    Clock::time_point now_{ std::chrono::hours(1) };
    std::vector<std::shared_ptr<Task>> tasks_;
    std::mutex mutex_;
    std::vector<std::function<void()>> posted_;
};
