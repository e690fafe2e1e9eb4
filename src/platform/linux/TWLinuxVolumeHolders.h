#pragma once

#include "platform/TWVolumes.h"

// What shows that an open file is on a volume. The volumes of a service share one file system, so for these its path
// must be in the volume as well.
struct TWLinuxVolumeMark {
    const TWVolume& volume;
    std::uint64_t deviceOfFiles = 0; // of its top folder; 0 if it was not looked at
    bool isMounted = false;
    bool isElsewhere = false; // its file system is still mounted, but not as this volume
};

// Programs that hold files on the volume: open, mapped into memory, running, or as their working or root folder. Root
// sees those of all users, anybody else their own. Each program is there once, as "okular (4711)". Any thread.
std::vector<std::string> TWLinuxProgramsHolding(const TWLinuxVolumeMark&, const TWCancellation&);
