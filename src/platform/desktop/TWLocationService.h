#pragma once

#include "platform/desktop/TWSessionBus.h"
#include "platform/linux/TWLinuxDesktop.h"

// gvfs on the session's message bus: a list, and a program for each of the locations.
class TWLocationService final {
public:
    // The patience is that with one call.
    explicit TWLocationService(std::chrono::milliseconds patience)
        : bus_(static_cast<int>(patience.count()))
    {
    }

    // Both as in TWLinuxDesktop.
    std::optional<TWLinuxLocationList> locations() const;
    std::optional<std::string> close(const TWLinuxLocation&, TWLinuxDesktop::Force) const;

private:
    const TWSessionBus bus_;
};
