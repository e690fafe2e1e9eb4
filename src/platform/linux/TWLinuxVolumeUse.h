#pragma once

#include "platform/TWVolumes.h"
#include "platform/linux/TWLinuxMountInfo.h"

TWVolume TWLinuxVolumeOf(const TWLinuxMount&);

// What TWVolumes::use() promises. A volume of a service must still be there. Any thread.
TWVolumeUse TWLinuxLookForHolders(const TWVolume&, const TWCancellation&);

// Waits for the volume. Any thread.
std::optional<std::uint64_t> TWLinuxFreeBytes(const TWVolume&);
