#pragma once

#include "platform/TWBackgroundStream.h"
#include "platform/linux/TWLinuxLocations.h"

// Notices that locations were opened or closed, by a look once a second in the background. Main thread.
class TWLinuxLocationWatch final : public TWRunLoopHandle {
public:
    using Found = TWLinuxLocations::Found;

    // Calls changed after each look with a result that is news. The call may destroy this object.
    TWLinuxLocationWatch(TWRunLoop&, std::shared_ptr<TWLinuxLocations>, std::function<bool(const Found&)> isNews,
        std::function<void()> changed);

private:
    void look();
    void take(const Found&);

    TWRunLoop& runLoop_;
    const std::shared_ptr<TWLinuxLocations> locations_; // used by one look at a time
    const std::function<bool(const Found&)> isNews_;
    const std::function<void()> changed_;
    std::unique_ptr<TWRunLoopHandle> ticking_;
    std::unique_ptr<TWBackgroundStream<Found>> looking_;
};
