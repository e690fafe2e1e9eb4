#include "platform/linux/TWLinuxVolumeFilter.h"

#include "platform/linux/TWLinuxSystemMounts.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

// Windows into the kernel and into services, wherever they are mounted.
constexpr const char* KernelTypes[] = { "autofs", "binfmt_misc", "bpf", "cgroup", "cgroup2", "configfs", "debugfs",
    "devpts", "devtmpfs", "efivarfs", "fuse.gvfsd-fuse", "fuse.lxcfs", "fuse.portal", "fusectl", "hugetlbfs", "mqueue",
    "nfsd", "nsfs", "proc", "pstore", "rpc_pipefs", "securityfs", "selinuxfs", "sysfs", "tracefs" };

// Parts of containers and packages, and memory, whose files would be lost.
constexpr const char* HiddenTypes[] = { "fuse.snapfuse", "overlay", "ramfs", "squashfs", "tmpfs" };

bool isOneOf(const auto& types, const std::string& type)
{
    return std::find(std::begin(types), std::end(types), type) != std::end(types);
}

}

TWLinuxVolumeFilter::TWLinuxVolumeFilter(const Setup& setup, std::string_view fstab)
    : setup_(setup)
{
    for (const auto& line : TWText::split(fstab, '\n'))
        readLine(line);
}

void TWLinuxVolumeFilter::readLine(std::string_view line)
{
    std::vector<std::string> fields;
    for (auto& field : TWText::split(line, ' ')) {
        for (auto& part : TWText::split(field, '\t')) {
            if (!part.empty())
                fields.push_back(std::move(part));
        }
    }
    if (fields.size() < 4 || fields[0].starts_with('#'))
        return;
    for (const auto& option : TWText::split(fields[3], ',')) {
        if (option == "x-gvfs-show" || option == "x-gvfs-hide")
            shown_[TWPath::withoutTrailingSlashes(TWLinuxWithoutMountEscapes(fields[1]))] = option == "x-gvfs-show";
    }
}

bool TWLinuxVolumeFilter::shows(const TWLinuxMount& mount) const
{
    if (isOneOf(KernelTypes, mount.type) || TWLinuxIsSystemMount(mount.point, setup_.neededPaths))
        return false;
    const bool isInside = std::any_of(setup_.folders.begin(), setup_.folders.end(),
        [&](const auto& folder) { return mount.point != folder && TWPath::isAtOrBelow(mount.point, folder); });
    if (setup_.sandboxed)
        return isInside;
    if (const auto found = shown_.find(mount.point); found != shown_.end())
        return found->second;
    // A name that begins with a dot hides what is mounted there.
    return isInside && !isOneOf(HiddenTypes, mount.type) && mount.point.find("/.") == std::string::npos;
}
