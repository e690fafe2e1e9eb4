#pragma once

#include "platform/TWRunLoop.h"

#include <QObject>

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

private:
    struct Worker {
        std::shared_ptr<TWCancellation> cancellation;
        std::thread thread;
    };

    // Runs the next posted call, on the main thread; one event is posted per call.
    void customEvent(QEvent*) override;

    std::mutex postedMutex_;
    std::deque<std::function<void()>> posted_;
    std::list<Worker> workers_;
};
