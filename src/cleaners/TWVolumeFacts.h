#pragma once

#include "platform/TWBackgroundStream.h"
#include "platform/TWVolumes.h"

// What is known of a mounted volume beyond the table.
struct TWVolumeFacts {
    TWVolume volume;
    TWVolumeUse use;
    std::optional<std::uint64_t> freeBytes; // nothing while it is not known
};

using TWVolumeLook = TWBackgroundStream<TWVolumeFacts>;

// Looks at the volumes in the background. Each is taken twice: with its use first, and then with its free space as
// well, so that a volume that does not answer hides no more than the free space of those after it. Both must outlive
// the look. Main thread.
std::unique_ptr<TWVolumeLook> TWLookAtVolumes(TWRunLoop&, const TWVolumes&, const std::vector<TWVolume>&,
    std::function<void(const TWVolumeFacts&)> taken, std::function<void()> ended);
