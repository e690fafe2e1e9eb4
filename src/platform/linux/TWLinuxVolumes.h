#pragma once

#include "platform/TWPlaces.h"
#include "platform/TWVolumes.h"
#include "platform/linux/TWLinuxVolumeFilter.h"

#include <mutex>

class TWLinuxVolumes final : public TWVolumes {
public:
    explicit TWLinuxVolumes(const TWPlaces&);

    std::optional<std::vector<TWVolume>> mountedVolumes() override;
    std::optional<std::vector<TWVolume>> allMounts() override;
    [[nodiscard]] std::unique_ptr<TWRunLoopHandle> watch(TWRunLoop&, std::function<void()> changed) override;
    TWVolumeUse use(const TWVolume&, const TWCancellation&) const override;
    std::optional<std::uint64_t> freeBytes(const TWVolume&) const override;

private:
    const TWLinuxVolumeFilter::Setup setup_;
    mutable std::mutex mutex_;
    mutable std::vector<TWVolume> asked_; // that have not answered yet; guarded by mutex_
};
