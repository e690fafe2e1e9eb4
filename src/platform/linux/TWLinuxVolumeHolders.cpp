#include "platform/linux/TWLinuxVolumeHolders.h"

#include "platform/linux/TWLinuxMountInfo.h"
#include "platform/linux/TWLinuxProcesses.h"
#include "platform/posix/TWDescriptor.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

constexpr const char* Links[] = { "cwd", "root", "exe" };

// The mounts of a process in a container are not in our table.
bool hasMount(int process, std::uint64_t identifier)
{
    const TWDescriptor table(openat(process, "mountinfo", O_RDONLY | O_CLOEXEC));
    const auto mounts = TWLinuxReadMounts(table.get());
    return std::any_of(mounts.begin(), mounts.end(), [&](const auto& mount) { return mount.identifier == identifier; });
}

// After an unmount: true if files with the number of the device were on the volume. The numbers of devices that are no
// hardware are given to others once they are free, and those of a device that is mounted elsewhere are on it rightly.
bool isKnownByDevice(const TWLinuxVolumeMark& mark)
{
    return major(mark.volume.deviceNumber) != 0 && !mark.isElsewhere;
}

// The number of a mount is given to another one as well once it is free. So after an unmount it says something only
// about a file whose mount is in no table any more.
bool isOn(const TWLinuxVolumeMark& mark, int process, const struct statx& found)
{
    const auto device = makedev(found.stx_dev_major, found.stx_dev_minor);
    const bool sameDevice = device == mark.volume.deviceNumber || (mark.isMounted && device == mark.deviceOfFiles);
    const bool sameMount = (found.stx_mask & STATX_MNT_ID) != 0 && found.stx_mnt_id == mark.volume.mount;
    if (mark.isMounted)
        return sameDevice || sameMount;
    return isKnownByDevice(mark) ? sameDevice : sameMount && !hasMount(process, mark.volume.mount);
}

bool leadsInto(const std::string& path, int folder, const char* link)
{
    char target[PATH_MAX];
    const auto length = readlinkat(folder, link, target, sizeof target);
    return length > 0 && TWPath::isAtOrBelow({ target, static_cast<std::size_t>(length) }, path);
}

// Uses what the system knows already where it can, so that a volume that does not answer does no harm.
bool leadsToVolume(const TWLinuxVolumeMark& mark, int process, int folder, const char* link)
{
    struct statx found;
    return statx(folder, link, AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT, STATX_MNT_ID, &found) == 0
        && isOn(mark, process, found) && (mark.volume.service.empty() || leadsInto(mark.volume.path, folder, link));
}

bool hasOpenFile(const TWLinuxVolumeMark& mark, int process)
{
    const int folder = openat(process, "fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> descriptors(folder < 0 ? nullptr : fdopendir(folder), closedir);
    while (const dirent* entry = descriptors ? readdir(descriptors.get()) : nullptr) {
        if (entry->d_name[0] != '.' && leadsToVolume(mark, process, dirfd(descriptors.get()), entry->d_name))
            return true;
    }
    return false;
}

// A line of maps is "RANGE MODE OFFSET MAJOR:MINOR INODE PATH", with hexadecimal numbers.
bool isMappedFrom(std::uint64_t device, std::string_view line)
{
    for (int field = 0; field < 3; ++field)
        line.remove_prefix(std::min(line.find(' '), line.size() - 1) + 1);
    unsigned majorNumber = 0;
    unsigned minorNumber = 0;
    const auto* end = line.data() + line.size();
    const auto* colon = std::from_chars(line.data(), end, majorNumber, 16).ptr;
    return colon != end && *colon == ':' && std::from_chars(colon + 1, end, minorNumber, 16).ec == std::errc()
        && makedev(majorNumber, minorNumber) == device;
}

bool isMappedFrom(const TWVolume& volume, std::string_view line)
{
    return isMappedFrom(volume.deviceNumber, line)
        && (volume.service.empty() || line.find(" " + volume.path + "/") != std::string_view::npos);
}

bool hasMappedFile(const TWLinuxVolumeMark& mark, int process)
{
    if (!mark.isMounted && !isKnownByDevice(mark))
        return false; // nothing would confirm the number
    const TWDescriptor maps(openat(process, "maps", O_RDONLY | O_CLOEXEC));
    std::string text;
    char buffer[16384];
    for (ssize_t length; maps.isOpen() && (length = read(maps.get(), buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(length));
    for (const auto& line : TWText::split(text, '\n')) {
        if (isMappedFrom(mark.volume, line))
            return true;
    }
    return false;
}

bool holds(const TWLinuxVolumeMark& mark, int process)
{
    for (const auto* link : Links) {
        if (leadsToVolume(mark, process, process, link))
            return true;
    }
    return hasOpenFile(mark, process) || hasMappedFile(mark, process);
}

}

std::vector<std::string> TWLinuxProgramsHolding(const TWLinuxVolumeMark& mark, const TWCancellation& cancellation)
{
    std::vector<std::string> programs;
    TWLinuxForEachProcess([&](const TWLinuxProcessFolder& process) {
        if (holds(mark, process.descriptor()))
            programs.push_back(TWText::fill("%@ (%@)", { process.read().programName(), process.number() }));
        return !cancellation.cancelled();
    });
    return programs;
}
