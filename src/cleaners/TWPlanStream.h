#pragma once

#include "cleaners/TWCleaner.h"
#include "platform/TWBackgroundStream.h"

// Makes a plan part by part on another thread and assembles it on the main thread. Destroying it ends the planning
// without a call. Main thread.
class TWPlanStream final : public TWRunLoopHandle {
public:
    using Sink = TWBackgroundStream<TWPlan>::Sink;

    // The work puts parts of about PartSize results each, in the order of the plan. beginning holds what is known in
    // advance.
    TWPlanStream(TWRunLoop& runLoop, TWPlan beginning, std::function<void(Sink&)> work, TWCleaner::PlanGrown grown,
        TWCleaner::PlanMade made)
        : plan_(std::move(beginning))
        , grown_(std::move(grown))
        , made_(std::move(made))
        , stream_(
              runLoop, PartsPerTurn, std::move(work), [this](TWPlan part) { take(std::move(part)); }, [this] { end(); })
    {
        plan_.items.reserve(RoomForItems);
    }

    static constexpr std::size_t PartSize = 1000;

private:
    static constexpr std::size_t PartsPerTurn = 8;

    // Takes addresses, but no memory before there are items. A vector that has to grow copies all items in one turn.
    static constexpr std::size_t RoomForItems = 1'100'000;

    void take(TWPlan part)
    {
        plan_.append(std::move(part));
        grown_(plan_);
    }

    // The call may destroy this object.
    void end()
    {
        const auto made = made_;
        made(std::move(plan_));
    }

    TWPlan plan_;
    const TWCleaner::PlanGrown grown_;
    const TWCleaner::PlanMade made_;
    TWBackgroundStream<TWPlan> stream_; // last, so that it is destroyed first and makes no call into destroyed members
};
