#pragma once

#include "platform/TWPlaces.h"
#include "platform/TWVolumes.h"
#include "platform/linux/TWLinuxLocations.h"
#include "platform/linux/TWLinuxVolumeFilter.h"

#include <mutex>

// The volumes in the system's table, and after them the locations of gvfs. In a sandbox gvfs is not asked.
class TWLinuxVolumes final : public TWVolumes {
public:
    explicit TWLinuxVolumes(const TWPlaces&);

    std::optional<std::vector<TWVolume>> mountedVolumes() override;
    std::optional<std::vector<TWVolume>> allMounts() override;
    std::vector<std::string> unknownFolders() const override { return found_.unknownFolders; }
    [[nodiscard]] std::unique_ptr<TWRunLoopHandle> watch(TWRunLoop&, std::function<void()> changed) override;
    TWVolumeUse use(const TWVolume&, const TWCancellation&) const override;
    std::optional<std::uint64_t> freeBytes(const TWVolume&) const override;

private:
    void addLocations(const TWLinuxMounts&, std::vector<TWVolume>&);
    bool isOpen(const TWVolume& location) const;

    const TWLinuxVolumeFilter::Setup setup_;
    const std::string desktopPlugIn_; // "" in a sandbox
    TWLinuxLocations locations_;
    TWLinuxLocations::Found found_; // at the latest look
    mutable std::mutex mutex_;
    mutable std::vector<TWVolume> asked_; // that have not answered yet; guarded by mutex_
};
