#pragma once

#include "platform/TWRunLoop.h"

#include <QObject>

#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <thread>

// The event loop of the QCoreApplication, which must exist before and outlive this object. The destructor cancels
// background work and waits until it has ended.
class TWQtRunLoop final : public TWRunLoop, private QObject {
public:
    TWQtRunLoop() = default;
    ~TWQtRunLoop();

    Clock::time_point now() const override { return Clock::now(); }
    std::unique_ptr<TWRunLoopHandle> after(Duration, std::function<void()>) override;
    std::unique_ptr<TWRunLoopHandle> every(Duration interval, std::function<void()>) override;
    void post(std::function<void()>) override;
    std::unique_ptr<TWRunLoopHandle> inBackground(Work, std::function<void()> finished) override;
    std::unique_ptr<TWRunLoopHandle> whenReadable(int descriptor, std::function<void()>) override;
    void turn(Duration longest) override;

    // Cancels all background work and waits until it has ended, but no longer than the given time. Returns false if
    // some goes on, as it does in a system call about a volume that does not answer; the destructor would wait, too.
    bool endBackgroundWork(Duration longest);

private:
    struct Worker {
        std::shared_ptr<TWCancellation> cancellation;
        std::thread thread;
    };

    // Runs the next posted call, on the main thread; one event is posted per call.
    void customEvent(QEvent*) override;

    std::mutex mutex_; // protects the next two
    std::deque<std::function<void()>> posted_;
    std::size_t working_ = 0; // workers that have not ended
    std::condition_variable workEnded_;
    std::list<Worker> workers_;
};
