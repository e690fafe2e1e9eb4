#include "TWEntryFacts.h"

#include <algorithm>
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
    blockSize = std::max<off_t>(found.stx_blksize, 1);
    // A folder of the same file system bound to a second place has the same device number; only this bit gives it away.
    mountPoint = (found.stx_attributes & found.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0;
    return 0;
}
