#include "platform/qt/TWQtRunLoop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QSocketNotifier>
#include <QTimer>

#include <system_error>

namespace {

// Owns a Qt object whose signal calls a function. Deletes the object later, because the handle is often destroyed
// inside that call.
template <typename Object>
class ObjectHandle final : public TWRunLoopHandle {
public:
    explicit ObjectHandle(Object* object)
        : object_(object)
    {
    }

    ~ObjectHandle()
    {
        if constexpr (std::is_same_v<Object, QTimer>)
            object_->stop();
        else
            object_->setEnabled(false);
        object_->disconnect();
        object_->deleteLater();
    }

private:
    Object* object_;
};

class CancellationHandle final : public TWRunLoopHandle {
public:
    explicit CancellationHandle(std::shared_ptr<TWCancellation> cancellation)
        : cancellation_(std::move(cancellation))
    {
    }
    ~CancellationHandle() { cancellation_->cancel(); }

private:
    std::shared_ptr<TWCancellation> cancellation_;
};

std::unique_ptr<TWRunLoopHandle> makeTimer(TWRunLoop::Duration interval, std::function<void()> call, bool once)
{
    auto* timer = new QTimer;
    timer->setSingleShot(once);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer, &QTimer::timeout, timer, [call = std::move(call)] { call(); });
    timer->start(interval);
    return std::make_unique<ObjectHandle<QTimer>>(timer);
}

}

TWQtRunLoop::~TWQtRunLoop()
{
    endBackgroundWork(Duration(0));
    for (auto& worker : workers_) {
        if (worker.thread.joinable())
            worker.thread.join();
    }
}

bool TWQtRunLoop::endBackgroundWork(Duration longest)
{
    for (auto& worker : workers_)
        worker.cancellation->cancel();
    std::unique_lock lock(mutex_);
    return workEnded_.wait_for(lock, longest, [this] { return working_ == 0; });
}

std::unique_ptr<TWRunLoopHandle> TWQtRunLoop::after(Duration delay, std::function<void()> call)
{
    return makeTimer(delay, std::move(call), true);
}

std::unique_ptr<TWRunLoopHandle> TWQtRunLoop::every(Duration interval, std::function<void()> call)
{
    return makeTimer(interval, std::move(call), false);
}

void TWQtRunLoop::post(std::function<void()> call)
{
    {
        // The event could carry the call itself, but the thread sanitizer cannot see how Qt synchronises the threads.
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(call));
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void TWQtRunLoop::customEvent(QEvent*)
{
    std::unique_lock lock(mutex_);
    const auto call = std::move(posted_.front());
    posted_.pop_front();
    lock.unlock();
    call();
}

std::unique_ptr<TWRunLoopHandle> TWQtRunLoop::inBackground(Work work, std::function<void()> finished)
{
    const auto cancellation = std::make_shared<TWCancellation>();
    const auto worker = workers_.insert(workers_.end(), { cancellation, {} });
    {
        const std::lock_guard lock(mutex_);
        ++working_;
    }
    const auto run = [this, worker, cancellation, work = std::move(work), finished = std::move(finished)] {
        work(cancellation);
        post([this, worker, cancellation, finished] {
            if (worker->thread.joinable())
                worker->thread.join();
            workers_.erase(worker);
            if (!cancellation->cancelled())
                finished();
        });
        const std::lock_guard lock(mutex_);
        --working_;
        workEnded_.notify_all();
    };
    try {
        worker->thread = std::thread(run); // runs on another thread and comes back by post()
    } catch (const std::system_error&) { // no thread is available: do it here, which blocks
        run();
    }
    return std::make_unique<CancellationHandle>(cancellation);
}

std::unique_ptr<TWRunLoopHandle> TWQtRunLoop::whenReadable(int descriptor, std::function<void()> call)
{
    auto* notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [call = std::move(call)] { call(); });
    return std::make_unique<ObjectHandle<QSocketNotifier>>(notifier);
}

void TWQtRunLoop::turn(Duration longest)
{
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(longest);
    QEventLoop().processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}
