#pragma once

#include "platform/TWLogSources.h"
#include "platform/linux/TWLinuxFileSystem.h"

class TWLinuxLogSources final : public TWLogSources {
public:
    std::vector<TWLogSource> userSources(const TWPlaces&) const override;

private:
    const TWLinuxFileSystem fileSystem_{};
};
