#pragma once

#include "platform/TWRunLoop.h"

#include <deque>
#include <mutex>
#include <utility>

// Runs work on another thread and delivers the items it produces on the main thread: in order, at most itemsPerTurn per
// turn of the event loop, and then calls ended once. Destroying the stream, which is allowed inside those calls,
// cancels the work and guarantees that no further call is made. Main thread, except where noted.
template <typename T>
class TWBackgroundStream final {
    struct Channel;

public:
    // What the work writes to. Any thread.
    class Sink {
    public:
        Sink(Channel& channel, const TWCancellation& cancellation)
            : channel_(channel)
            , cancellation_(cancellation)
        {
        }
        void put(T item) { channel_.put(std::move(item)); }
        const TWCancellation& cancellation() const { return cancellation_; }

    private:
        Channel& channel_;
        const TWCancellation& cancellation_;
    };

    // The work must use copies only and check sink.cancellation() at least every few milliseconds.
    TWBackgroundStream(TWRunLoop& runLoop, std::size_t itemsPerTurn, std::function<void(Sink&)> work,
        std::function<void(T)> taken, std::function<void()> ended)
        : channel_(std::make_shared<Channel>(runLoop, itemsPerTurn, std::move(taken), std::move(ended)))
    {
        // The work runs on another thread; channel->put() brings its items back to the main thread.
        background_ = runLoop.inBackground(
            [channel = channel_, work = std::move(work)](const std::shared_ptr<const TWCancellation>& cancellation) {
                Sink sink(*channel, *cancellation);
                work(sink);
            },
            [channel = channel_] {
                channel->workEnded = true;
                channel->deliverOrEnd();
            });
    }

    ~TWBackgroundStream() { channel_->alive = false; }

    TWBackgroundStream(const TWBackgroundStream&) = delete;
    TWBackgroundStream& operator=(const TWBackgroundStream&) = delete;

private:
    // Shared by the stream, the work and the posted calls.
    struct Channel : std::enable_shared_from_this<Channel> {
        Channel(TWRunLoop& givenRunLoop, std::size_t givenItemsPerTurn, std::function<void(T)> givenTaken,
            std::function<void()> givenEnded)
            : runLoop(givenRunLoop)
            , itemsPerTurn(givenItemsPerTurn)
            , taken(std::move(givenTaken))
            , ended(std::move(givenEnded))
        {
        }

        void put(T item)
        {
            const std::lock_guard lock(mutex);
            items.push_back(std::move(item));
            if (!std::exchange(deliveryPending, true))
                postDelivery();
        }

        void postDelivery()
        {
            runLoop.post([channel = this->shared_from_this()] {
                if (channel->alive)
                    channel->deliver();
            });
        }

        void deliver()
        {
            std::deque<T> batch;
            {
                const std::lock_guard lock(mutex);
                while (!items.empty() && batch.size() < itemsPerTurn) {
                    batch.push_back(std::move(items.front()));
                    items.pop_front();
                }
                deliveryPending = !items.empty();
                if (deliveryPending)
                    postDelivery();
            }
            for (auto& item : batch) {
                if (!alive)
                    return;
                taken(std::move(item));
            }
            deliverOrEnd();
        }

        // The last item may be delivered before or after workEnded is set.
        void deliverOrEnd()
        {
            if (!alive || !workEnded)
                return;
            {
                const std::lock_guard lock(mutex);
                if (deliveryPending)
                    return;
            }
            workEnded = false;
            ended();
        }

        TWRunLoop& runLoop;
        const std::size_t itemsPerTurn;
        const std::function<void(T)> taken;
        const std::function<void()> ended;
        bool alive = true; // main thread
        bool workEnded = false; // main thread
        std::mutex mutex;
        std::deque<T> items; // guarded by mutex
        bool deliveryPending = false; // guarded by mutex
    };

    std::shared_ptr<Channel> channel_;
    std::unique_ptr<TWRunLoopHandle> background_;
};
