#include "platform/linux/TWLinuxHeldFolder.h"

#include "platform/linux/TWLinuxFacts.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <cerrno>

std::unique_ptr<TWLinuxHeldFolder> TWLinuxHeldFolder::hold(TWDescriptor descriptor, int& error)
{
    if (!descriptor.isOpen()) {
        error = errno;
        return nullptr;
    }
    const auto look = TWLookAt(descriptor.get(), "");
    error = look.error;
    if (!look.isThere())
        return nullptr;
    return std::unique_ptr<TWLinuxHeldFolder>(new TWLinuxHeldFolder(std::move(descriptor), look.facts.identity));
}

TWFileLook TWLinuxHeldFolder::look(const std::string& name) const
{
    if (name.empty() || name.find('/') != std::string::npos || name.find('\0') != std::string::npos)
        return TWFailedLook(EINVAL);
    return TWLookAt(descriptor_.get(), name.c_str());
}

// Climbs one folder at a time, because the kernel would walk "../../.." from its beginning each time.
std::vector<TWAncestor> TWLinuxHeldFolder::chain() const
{
    std::vector<TWAncestor> ancestors;
    TWDescriptor reached;
    std::uint64_t mount = 0;
    for (int at = descriptor_.get();; at = reached.get()) {
        struct statx found = {};
        if (statx(at, "", AT_EMPTY_PATH, STATX_INO | STATX_MNT_ID, &found) != 0)
            return {};
        const TWAncestor ancestor{ { makedev(found.stx_dev_major, found.stx_dev_minor), found.stx_ino },
            TWIsMountRoot(found) };
        // Only the root is its own parent. A folder that is mounted inside itself has the same identity as its parent,
        // but belongs to another mount.
        if (!ancestors.empty() && ancestor == ancestors.back() && found.stx_mnt_id == mount)
            return ancestors;
        mount = found.stx_mnt_id;
        ancestors.push_back(ancestor);
        reached = TWDescriptor(openat(at, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!reached.isOpen())
            return {};
    }
}
