#pragma once

#include "TWEjector.h"
#include "platform/linux/TWLinuxLocations.h"

// Closes a network folder, a phone or the like that was opened with gvfs. The kernel knows no mount of it that could be
// detached: its files fail afterwards also for programs that have them open.
class TWLocationEjector final {
public:
    TWLocationEjector(std::string path, TWDeadline::Duration total);

    // Writes what was tried and answered to standard error. Nothing if there is no such location at the path.
    std::optional<TWEjector::Result> eject();

private:
    bool close(TWLinuxDesktop::Force, TWDeadline::Duration longest);
    std::optional<bool> isGone();

    const std::string path_;
    const TWDeadline deadline_;
    TWLinuxLocations locations_;
    TWVolume volume_;
};
