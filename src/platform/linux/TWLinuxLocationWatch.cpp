#include "platform/linux/TWLinuxLocationWatch.h"

namespace {

constexpr TWRunLoop::Duration BetweenLooks = std::chrono::seconds(1);

}

TWLinuxLocationWatch::TWLinuxLocationWatch(TWRunLoop& runLoop, std::shared_ptr<TWLinuxLocations> locations,
    std::function<bool(const Found&)> isNews, std::function<void()> changed)
    : runLoop_(runLoop)
    , locations_(std::move(locations))
    , isNews_(std::move(isNews))
    , changed_(std::move(changed))
    , ticking_(runLoop.every(BetweenLooks, [this] { look(); }))
{
}

void TWLinuxLocationWatch::look()
{
    if (looking_)
        return;
    looking_ = std::make_unique<TWBackgroundStream<Found>>(
        runLoop_, 1, [locations = locations_](auto& sink) { sink.put(locations->look(TWLinuxReadMounts())); },
        [this](const Found& found) { take(found); }, [this] { looking_.reset(); });
}

void TWLinuxLocationWatch::take(const Found& found)
{
    if (!isNews_(found))
        return;
    const auto changed = changed_;
    changed();
}
