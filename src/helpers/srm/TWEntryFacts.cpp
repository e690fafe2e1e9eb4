#include "TWEntryFacts.h"

#include <cerrno>
#include <fcntl.h>

int TWEntryFacts::read(int folder, const char* name)
{
    struct statx found = {};
    constexpr int Flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_EMPTY_PATH;
    if (statx(folder, name, Flags, STATX_BASIC_STATS, &found) != 0)
        return errno;
    device = std::uint64_t(found.stx_dev_major) << 32 | found.stx_dev_minor;
    inode = found.stx_ino;
    mode = found.stx_mode;
    links = found.stx_nlink;
    size = off_t(found.stx_size);
    // A bind mount from the same file system has the same device number; only this bit reveals it.
    mountPoint = (found.stx_attributes & found.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0;
    return 0;
}
