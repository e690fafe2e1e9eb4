#include "TWUDisksWay.h"

#include "TWEjectReport.h"
#include "platform/linux/TWLinuxBlockDevice.h"
#include "platform/linux/TWLinuxVolumeUse.h"

#include <algorithm>

namespace {

constexpr char NotDone[] = "note: %@ answered to %@.%@: %@";
constexpr char StillInUse[] = "note: the drive was not ejected, because another volume on it is in use";

constexpr char MountedElsewhere[] = "it no longer lists the device as mounted there and nowhere else";

constexpr TWDeadline::Duration LongestLook{ 10'000 };
constexpr TWDeadline::Duration LongestCall{ 10'000 };

// Also if a program of the user holds a file system that was only detached from it.
bool isInUse(const TWUDisksObject& device)
{
    TWVolume volume;
    volume.deviceNumber = device.deviceNumber;
    return !device.mountPoints.empty() || TWLinuxLookForHolders(volume, {}).isInUse;
}

}

bool TWUDisksWay::applies(const TWLinuxMount& mount)
{
    objects_ = service_.objects(deadline_.left(LongestLook));
    volume_ = objectOf(mount);
    return !volume_.empty();
}

// UDisks2 chooses itself which mount of a device it unmounts, so there must be this one and no other.
std::string TWUDisksWay::objectOf(const TWLinuxMount& mount) const
{
    const auto number = TWLinuxBlockDevice::number(mount.deviceNumber, mount.source);
    for (const auto& [path, object] : objects_) {
        if (number != 0 && object.deviceNumber == number
            && object.mountPoints == std::vector<std::string>{ mount.point })
            return path;
    }
    return "";
}

std::string TWUDisksWay::unmount(const TWJudgedMount& judged, TWUnmountKind kind, TWDeadline::Duration limit)
{
    if (!refusal_.empty())
        return refusal_; // nobody wants to be asked for a password twice
    objects_ = service_.objects(limit);
    if (objectOf(judged.mount) != volume_)
        return MountedElsewhere;
    const auto force = kind == TWUnmountKind::Lazy ? TWUDisks::Force::Yes : TWUDisks::Force::No;
    const auto answer = service_.call(volume_, "Filesystem", "Unmount", limit, force);
    if (answer.isRefusal)
        refusal_ = answer.problem;
    return answer.problem;
}

void TWUDisksWay::release(const TWDeadline& deadline)
{
    auto device = lock(deadline);
    if (const auto& whole = objects_[device].partitioned; !whole.empty())
        device = whole;
    endDiskImage(device, deadline);
    if (const auto drive = objects_[device].drive; !drive.empty())
        eject(drive, deadline);
}

// Returns the device that held the encrypted container, or else the volume.
std::string TWUDisksWay::lock(const TWDeadline& deadline)
{
    auto container = objects_[volume_].encrypted;
    if (container.empty())
        return volume_;
    call(container, "Encrypted", "Lock", deadline);
    return container;
}

void TWUDisksWay::endDiskImage(const std::string& object, const TWDeadline& deadline)
{
    if (!objects_[object].isLoop)
        return;
    const auto now = service_.objects(deadline.left(LongestLook));
    const bool isUsed = std::any_of(now.begin(), now.end(), [&](const auto& each) {
        return (each.first == object || each.second.partitioned == object) && isInUse(each.second);
    });
    // Most images end by themselves with their last mount.
    if (!isUsed && TWLinuxBlockDevice::isDiskImage(objects_[object].deviceNumber))
        call(object, "Loop", "Delete", deadline);
}

void TWUDisksWay::eject(const std::string& drive, const TWDeadline& deadline)
{
    const auto now = service_.objects(deadline.left(LongestLook));
    const auto found = now.find(drive);
    if (found == now.end() || !(found->second.isEjectable || found->second.isRemovable))
        return;
    const bool isUsed = std::any_of(
        now.begin(), now.end(), [&](const auto& each) { return each.second.drive == drive && isInUse(each.second); });
    if (isUsed)
        TWReport(StillInUse, {});
    else if (found->second.isEjectable)
        call(drive, "Drive", "Eject", deadline);
    else if (found->second.canPowerOff)
        call(drive, "Drive", "PowerOff", deadline);
}

void TWUDisksWay::call(const std::string& object, const char* interface, const char* method, const TWDeadline& deadline)
{
    const auto answer = service_.call(object, interface, method, deadline.left(LongestCall));
    if (!answer.problem.empty())
        TWReport(NotDone, { name(), interface, method, answer.problem });
}
