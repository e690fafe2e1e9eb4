#include "platform/linux/TWLinuxBlockDevice.h"

#include "platform/posix/TWDescriptor.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <fstream>
#include <glob.h>
#include <iterator>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {

std::vector<std::string> pathsLike(const std::string& pattern)
{
    glob_t found{};
    std::vector<std::string> paths;
    if (glob(pattern.c_str(), GLOB_NOSORT, nullptr, &found) == 0)
        paths.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    globfree(&found);
    return paths;
}

std::string systemFolder(std::uint64_t number)
{
    return TWText::fill("/sys/dev/block/%@:%@", { std::to_string(major(number)), std::to_string(minor(number)) });
}

// "sdb1"; "" if there is no such device any more.
std::string kernelName(std::uint64_t number)
{
    char target[PATH_MAX];
    const auto length = readlink(systemFolder(number).c_str(), target, sizeof target);
    return std::string(TWPath::lastComponent({ target, length > 0 ? static_cast<std::size_t>(length) : 0 }));
}

// ext4, XFS, F2FS and some others, and btrfs, have an entry for each device as long as a file system on it is mounted
// or has open files. Everybody may look. FAT, exFAT and NTFS have none.
bool isListedByFileSystems(const std::string& name)
{
    return !pathsLike("/sys/fs/*/" + name).empty() || !pathsLike("/sys/fs/btrfs/*/devices/" + name).empty();
}

// The kernel refuses to open a device exclusively while a file system, another device or swap has it. Sure for every
// file system, but usually only root may open devices.
TWLinuxBlockDevice::Use exclusiveUse(std::uint64_t number, const std::string& name)
{
    using enum TWLinuxBlockDevice::Use;
    const auto path = "/dev/" + name;
    struct stat found;
    if (stat(path.c_str(), &found) != 0 || !S_ISBLK(found.st_mode) || found.st_rdev != number)
        return Unknown;
    const TWDescriptor device(open(path.c_str(), O_RDONLY | O_EXCL | O_NONBLOCK | O_CLOEXEC));
    if (device.isOpen() || errno == ENOMEDIUM || errno == ENXIO)
        return Free;
    return errno == EBUSY ? InUse : Unknown;
}

}

std::uint64_t TWLinuxBlockDevice::number(std::uint64_t fileSystemNumber, const std::string& source)
{
    if (major(fileSystemNumber) != 0)
        return fileSystemNumber;
    // btrfs, which may be on several devices, has no number of theirs.
    struct stat found;
    const bool isDevice = source.starts_with("/dev/") && stat(source.c_str(), &found) == 0 && S_ISBLK(found.st_mode);
    return isDevice ? found.st_rdev : 0;
}

std::uint64_t TWLinuxBlockDevice::disk(std::uint64_t number)
{
    std::uint64_t sequence = 0;
    for (const auto* file : { "/diskseq", "/../diskseq" }) { // the second is of the disk that the partition is on
        if (number != 0 && sequence == 0)
            std::ifstream(systemFolder(number) + file) >> sequence;
    }
    return sequence;
}

std::vector<std::string> TWLinuxBlockDevice::devicesOn(std::uint64_t number)
{
    auto devices = pathsLike(systemFolder(number) + "/holders/*");
    for (auto& device : devices)
        device = "/dev/" + std::string(TWPath::lastComponent(device));
    return devices;
}

std::vector<TWLinuxBlockDevice::DiskImage> TWLinuxBlockDevice::diskImages()
{
    std::vector<DiskImage> images;
    for (const auto& file : pathsLike("/sys/block/loop*/loop/backing_file")) {
        std::ifstream text(file, std::ios::binary);
        std::string path(std::istreambuf_iterator<char>(text), {});
        if (path.ends_with('\n'))
            path.pop_back();
        const auto device = TWPath::parent(TWPath::parent(file));
        images.push_back({ "/dev/" + std::string(TWPath::lastComponent(device)), std::move(path) });
    }
    return images;
}

bool TWLinuxBlockDevice::isDiskImage(std::uint64_t number)
{
    return access((systemFolder(number) + "/loop/backing_file").c_str(), F_OK) == 0;
}

bool TWLinuxBlockDevice::isListed(std::uint64_t number)
{
    const auto name = number == 0 ? "" : kernelName(number);
    return !name.empty() && isListedByFileSystems(name);
}

TWLinuxBlockDevice::Use TWLinuxBlockDevice::use(std::uint64_t number)
{
    const auto name = number == 0 ? "" : kernelName(number);
    if (name.empty())
        return Use::Free; // there is no such device any more
    return isListedByFileSystems(name) || !devicesOn(number).empty() ? Use::InUse : exclusiveUse(number, name);
}
