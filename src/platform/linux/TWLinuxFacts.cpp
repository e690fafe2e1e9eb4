#include "platform/linux/TWLinuxFacts.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace {

constexpr std::uint64_t BlockSize = 512; // the unit of st_blocks on every file system

// A file system may hold times that do not fit, such as the year 2400.
std::int64_t nanoseconds(const timespec& time)
{
    constexpr std::int64_t Second = 1'000'000'000;
    constexpr auto Latest = std::numeric_limits<std::int64_t>::max() / Second - 1;
    return std::clamp(std::int64_t(time.tv_sec), -Latest, Latest) * Second + time.tv_nsec;
}

}

TWFileKind TWKindOfMode(mode_t mode)
{
    if (S_ISREG(mode))
        return TWFileKind::File;
    if (S_ISDIR(mode))
        return TWFileKind::Folder;
    return S_ISLNK(mode) ? TWFileKind::Link : TWFileKind::Other;
}

TWFileFacts TWFactsFrom(const struct stat& found)
{
    TWFileFacts facts;
    facts.identity = { found.st_dev, found.st_ino };
    facts.size = static_cast<std::uint64_t>(found.st_size);
    facts.bytes = static_cast<std::uint64_t>(found.st_blocks) * BlockSize;
    facts.changed = nanoseconds(found.st_ctim);
    facts.modified = nanoseconds(found.st_mtim);
    facts.links = static_cast<std::uint32_t>(found.st_nlink);
    facts.kind = TWKindOfMode(found.st_mode);
    return facts;
}

bool TWIsMountRoot(const struct statx& found)
{
    return (found.stx_attributes & found.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0;
}

TWFileLook TWFailedLook(int error)
{
    // Nothing can have a name that is too long.
    const bool gone = error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
    return { gone ? TWPresence::Gone : TWPresence::Unknown, error, {} };
}

TWFileLook TWLookAt(int folder, const char* name)
{
    struct stat found;
    if (fstatat(folder, name, &found, AT_SYMLINK_NOFOLLOW | (*name ? 0 : AT_EMPTY_PATH)) != 0)
        return TWFailedLook(errno);
    return { TWPresence::There, 0, TWFactsFrom(found) };
}
