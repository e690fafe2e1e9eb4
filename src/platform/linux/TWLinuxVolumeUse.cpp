#include "platform/linux/TWLinuxVolumeUse.h"

#include "platform/linux/TWLinuxBlockDevice.h"
#include "platform/linux/TWLinuxVolumeHolders.h"
#include "platform/posix/TWDescriptor.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

namespace {

constexpr auto MountedThere = "the volume at \"%@\"";
constexpr auto DiskImage = "a disk image on it (%@)";

// Opens the top folder of the volume without asking the volume. Closed if something else is mounted there now.
TWDescriptor openTop(const TWVolume& volume, struct statx& found)
{
    TWDescriptor top(open(volume.path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!top.isOpen() || statx(top.get(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_MNT_ID, &found) != 0
        || (found.stx_mask & STATX_MNT_ID) == 0 || found.stx_mnt_id != volume.mount)
        top.close();
    return top;
}

// On btrfs files have another number than the file system. The top folder is closed again at once, because it would
// itself hold the volume.
std::uint64_t deviceOfFiles(const TWVolume& volume)
{
    struct statx found;
    const bool hasOther = major(volume.deviceNumber) == 0 && TWLinuxBlockDevice::number(0, volume.device) != 0;
    return hasOther && openTop(volume, found).isOpen() ? makedev(found.stx_dev_major, found.stx_dev_minor) : 0;
}

void addMountsInside(const TWLinuxMounts& mounts, const TWVolume& volume, std::vector<std::string>& holders)
{
    for (const auto& mount : mounts) {
        if (mount.point != volume.path && TWPath::isAtOrBelow(mount.point, volume.path))
            holders.push_back(TWText::fill(MountedThere, { mount.point }));
    }
}

void addDiskImages(const TWVolume& volume, std::vector<std::string>& holders)
{
    for (const auto& image : TWLinuxBlockDevice::diskImages()) {
        if (TWPath::isAtOrBelow(image.path, volume.path))
            holders.push_back(TWText::fill(DiskImage, { image.device }));
    }
}

TWLinuxVolumeMark markOf(const TWVolume& volume, const TWLinuxMounts& mounts)
{
    TWLinuxVolumeMark mark{ volume };
    mark.isMounted = !volume.service.empty() || std::any_of(mounts.begin(), mounts.end(), [&](const auto& mount) {
        return TWLinuxVolumeOf(mount).isSameMount(volume);
    });
    mark.isElsewhere = !mark.isMounted && std::any_of(mounts.begin(), mounts.end(), [&](const auto& mount) {
        return mount.deviceNumber == volume.deviceNumber && mount.source == volume.device;
    });
    mark.deviceOfFiles = mark.isMounted ? deviceOfFiles(volume) : 0;
    return mark;
}

}

TWVolume TWLinuxVolumeOf(const TWLinuxMount& mount)
{
    const auto device = TWLinuxBlockDevice::number(mount.deviceNumber, mount.source);
    return { mount.point, mount.source, mount.identifier, mount.deviceNumber, TWLinuxBlockDevice::disk(device) };
}

TWVolumeUse TWLinuxLookForHolders(const TWVolume& volume, const TWCancellation& cancellation)
{
    const auto mounts = TWLinuxReadMounts();
    const auto mark = markOf(volume, mounts);
    TWVolumeUse use;
    use.holders = TWLinuxProgramsHolding(mark, cancellation);
    if (mark.isMounted) {
        addMountsInside(mounts, volume, use.holders);
        addDiskImages(volume, use.holders); // of a detached volume the system does not tell where they are
        use.isInUse = !use.holders.empty();
        return use;
    }
    const auto device = TWLinuxBlockDevice::number(volume.deviceNumber, volume.device);
    if (!mark.isElsewhere) {
        const auto others = TWLinuxBlockDevice::devicesOn(device);
        use.holders.insert(use.holders.end(), others.begin(), others.end());
    }
    use.isInUse = device != 0
        && (!use.holders.empty()
            || (!mark.isElsewhere && TWLinuxBlockDevice::use(device) == TWLinuxBlockDevice::Use::InUse));
    return use;
}

std::optional<std::uint64_t> TWLinuxFreeBytes(const TWVolume& volume)
{
    struct statx found;
    struct statvfs space;
    const auto top = openTop(volume, found);
    if (!top.isOpen() || fstatvfs(top.get(), &space) != 0 || space.f_blocks == 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(space.f_bavail) * space.f_frsize;
}
