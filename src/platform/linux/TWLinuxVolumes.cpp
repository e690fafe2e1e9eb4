#include "platform/linux/TWLinuxVolumes.h"

#include "platform/linux/TWLinuxLocationWatch.h"
#include "platform/linux/TWLinuxMountWatch.h"
#include "platform/linux/TWLinuxSystemMounts.h"
#include "platform/linux/TWLinuxVolumeUse.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <pwd.h>
#include <set>
#include <unistd.h>

namespace {

constexpr TWLinuxLocations::Duration PatienceOnMainThread{ 300 };
constexpr TWLinuxLocations::Duration PatienceInBackground{ 1000 };

struct Watches final : TWRunLoopHandle {
    std::unique_ptr<TWRunLoopHandle> mounts;
    std::unique_ptr<TWRunLoopHandle> locations;
};

TWLinuxVolumeFilter::Setup setupFor(const TWPlaces& places)
{
    if (places.sandboxed())
        return { { places.sandboxRoot }, TWLinuxNeededPaths(places), true };
    std::error_code error;
    const auto home = std::filesystem::weakly_canonical(places.home, error);
    std::vector<std::string> folders{ "/media", "/mnt", error ? places.home : home.string() };
    if (const passwd* user = getpwuid(getuid()))
        folders.push_back(std::string("/run/media/") + user->pw_name);
    return { std::move(folders), TWLinuxNeededPaths(places), false };
}

std::string fileSystemsTable()
{
    std::ifstream file("/etc/fstab", std::ios::binary);
    return { std::istreambuf_iterator<char>(file), {} };
}

}

TWLinuxVolumes::TWLinuxVolumes(const TWPlaces& places)
    : setup_(setupFor(places))
    , desktopPlugIn_(places.sandboxed() ? "" : places.desktop)
    , locations_(desktopPlugIn_, PatienceOnMainThread)
{
}

void TWLinuxVolumes::addLocations(const TWLinuxMounts& mounts, std::vector<TWVolume>& volumes)
{
    found_ = locations_.look(mounts);
    volumes.insert(volumes.end(), found_.volumes.begin(), found_.volumes.end());
}

std::optional<std::vector<TWVolume>> TWLinuxVolumes::mountedVolumes()
{
    const auto mounts = TWLinuxReadMounts();
    if (mounts.empty())
        return std::nullopt;
    const TWLinuxVolumeFilter filter(setup_, fileSystemsTable());
    std::set<std::pair<std::uint64_t, std::string_view>> covers; // what each mount is on, and where
    for (const auto& mount : mounts)
        covers.emplace(mount.parent, mount.point);
    std::vector<TWVolume> volumes;
    for (const auto& mount : mounts) {
        if (filter.shows(mount) && !covers.contains({ mount.identifier, mount.point }))
            volumes.push_back(TWLinuxVolumeOf(mount));
    }
    addLocations(mounts, volumes);
    return volumes;
}

std::optional<std::vector<TWVolume>> TWLinuxVolumes::allMounts()
{
    auto mounts = TWLinuxReadMounts();
    if (mounts.empty())
        return std::nullopt;
    // Something is mounted on an "autofs" only when somebody looks there.
    std::erase_if(mounts, [&](const auto& mount) { return mount.type == "autofs"; });
    std::set<std::pair<std::uint64_t, std::string_view>> covers; // what each mount is on, and where
    for (const auto& mount : mounts)
        covers.emplace(mount.parent, mount.point);
    // A mount usually comes after the one that it covers, but not if it was moved there.
    std::stable_partition(mounts.begin(), mounts.end(), [&](const auto& mount) {
        return covers.contains({ mount.identifier, mount.point });
    });
    std::vector<TWVolume> volumes;
    for (const auto& mount : mounts)
        volumes.push_back(TWLinuxVolumeOf(mount));
    addLocations(mounts, volumes);
    return volumes;
}

std::unique_ptr<TWRunLoopHandle> TWLinuxVolumes::watch(TWRunLoop& runLoop, std::function<void()> changed)
{
    auto watches = std::make_unique<Watches>();
    if (!desktopPlugIn_.empty())
        watches->locations = std::make_unique<TWLinuxLocationWatch>(
            runLoop, std::make_shared<TWLinuxLocations>(desktopPlugIn_, PatienceInBackground),
            [this](const auto& found) { return found != found_; }, changed);
    watches->mounts = std::make_unique<TWLinuxMountWatch>(runLoop, std::move(changed));
    return watches;
}

// For any thread.
bool TWLinuxVolumes::isOpen(const TWVolume& location) const
{
    const auto volumes = TWLinuxLocations(desktopPlugIn_, PatienceInBackground).look(TWLinuxReadMounts()).volumes;
    return std::find(volumes.begin(), volumes.end(), location) != volumes.end();
}

TWVolumeUse TWLinuxVolumes::use(const TWVolume& volume, const TWCancellation& cancellation) const
{
    // Files of a location that was closed fail, and hold nothing any more.
    if (!volume.service.empty() && !isOpen(volume))
        return {};
    return TWLinuxLookForHolders(volume, cancellation);
}

// Each question to a volume that does not answer takes a thread for good, so there is only one.
std::optional<std::uint64_t> TWLinuxVolumes::freeBytes(const TWVolume& volume) const
{
    {
        const std::lock_guard lock(mutex_);
        if (std::find(asked_.begin(), asked_.end(), volume) != asked_.end())
            return std::nullopt;
        asked_.push_back(volume);
    }
    const auto bytes = TWLinuxFreeBytes(volume);
    const std::lock_guard lock(mutex_);
    std::erase(asked_, volume);
    return bytes;
}
