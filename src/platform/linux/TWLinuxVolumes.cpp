#include "platform/linux/TWLinuxVolumes.h"

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
{
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
    return volumes;
}

std::unique_ptr<TWRunLoopHandle> TWLinuxVolumes::watch(TWRunLoop& runLoop, std::function<void()> changed)
{
    return std::make_unique<TWLinuxMountWatch>(runLoop, std::move(changed));
}

TWVolumeUse TWLinuxVolumes::use(const TWVolume& volume, const TWCancellation& cancellation) const
{
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
