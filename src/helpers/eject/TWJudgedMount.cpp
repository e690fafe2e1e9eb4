#include "TWJudgedMount.h"

#include "platform/TWFileSystem.h"
#include "platform/linux/TWLinuxOpen.h"
#include "platform/linux/TWLinuxSystemMounts.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>

namespace {

constexpr char NoTable[] = "the list of mounts could not be read";
constexpr char NotAMountPoint[] = "nothing is mounted there";
constexpr char OfTheSystem[] = "it belongs to the system, or your session needs it";
constexpr char MountedInside[] = "another volume is mounted inside, at \"%@\"";
constexpr char CannotReach[] = "the folder above it cannot be opened: %@";
constexpr char Hidden[] = "what is mounted there is hidden by another mount";

const TWLinuxMount* mountOn(const TWLinuxMounts& mounts, std::uint64_t parent, const std::string& point)
{
    const auto found = std::find_if(mounts.begin(), mounts.end(),
        [&](const auto& mount) { return mount.parent == parent && mount.point == point; });
    return found == mounts.end() ? nullptr : &*found;
}

// The topmost of the mounts that are stacked at the point, which is in a folder on the mount with this identifier.
const TWLinuxMount* topmostMount(const TWLinuxMounts& mounts, std::uint64_t parent, const std::string& point)
{
    const auto* top = mountOn(mounts, parent, point);
    for (std::size_t guard = 0; top && guard < mounts.size(); ++guard) {
        const auto* next = mountOn(mounts, top->identifier, point);
        if (!next)
            break;
        top = next;
    }
    return top;
}

const TWLinuxMount* mountInside(const TWLinuxMounts& mounts, const std::string& path)
{
    const auto found = std::find_if(mounts.begin(), mounts.end(),
        [&](const auto& mount) { return mount.point != path && TWPath::isAtOrBelow(mount.point, path); });
    return found == mounts.end() ? nullptr : &*found;
}

std::string objectionTo(
    const TWLinuxMounts& mounts, const std::string& path, const std::vector<std::string>& neededPaths)
{
    if (mounts.empty())
        return NoTable;
    if (std::none_of(mounts.begin(), mounts.end(), [&](const auto& mount) { return mount.point == path; }))
        return NotAMountPoint;
    if (TWLinuxIsSystemMount(path, neededPaths))
        return OfTheSystem;
    const auto* inside = mountInside(mounts, path);
    return inside ? TWText::fill(MountedInside, { inside->point }) : "";
}

}

TWJudgedMount TWJudgeMount(const std::string& path, const std::vector<std::string>& neededPaths)
{
    TWJudgedMount judged;
    const auto mounts = TWLinuxReadMounts();
    judged.objection = objectionTo(mounts, path, neededPaths);
    if (!judged.objection.empty())
        return judged;
    judged.name = TWPath::lastComponent(path);
    judged.parent = TWLinuxOpenWithoutLinks(AT_FDCWD, std::string(TWPath::parent(path)).c_str(), O_PATH);
    struct statx above;
    if (!judged.parent.isOpen() || statx(judged.parent.get(), "", AT_EMPTY_PATH, STATX_MNT_ID, &above) != 0) {
        judged.objection = TWText::fill(CannotReach, { TWErrorText(errno) });
        return judged;
    }
    const auto* top = topmostMount(mounts, above.stx_mnt_id, path);
    if (top)
        judged.mount = *top;
    else
        judged.objection = Hidden;
    return judged;
}
