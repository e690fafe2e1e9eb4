#include "platform/linux/TWLinuxOpen.h"

#include "platform/linux/TWLinuxFacts.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

#include <atomic>
#include <cerrno>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace {

constexpr int FolderFlags = O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// Kernels before 5.6 have no openat2().
std::atomic<bool> hasRestrictedOpen = true;

// Returns nothing if the system call cannot be used. Some sandboxes forbid system calls that they do not know with
// EPERM. That is not remembered, because a file system may also give this error for a single folder.
std::optional<TWDescriptor> openRestricted(int folder, const char* path, int flags, std::uint64_t restrictions)
{
    if (!hasRestrictedOpen)
        return std::nullopt;
    open_how how{};
    how.flags = static_cast<std::uint64_t>(flags | FolderFlags);
    how.resolve = restrictions;
    TWDescriptor opened(static_cast<int>(syscall(SYS_openat2, folder, path, &how, sizeof how)));
    if (opened.isOpen() || (errno != ENOSYS && errno != EPERM))
        return opened;
    if (errno == ENOSYS)
        hasRestrictedOpen = false;
    return std::nullopt;
}

TWDescriptor openByComponents(int folder, std::string_view path, int flags)
{
    TWDescriptor reached;
    if (path.starts_with('/'))
        reached = TWDescriptor(open("/", O_PATH | FolderFlags));
    while (!path.empty()) {
        path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
        const std::string component(path.substr(0, path.find('/')));
        path.remove_prefix(component.size());
        const bool last = path.find_first_not_of('/') == std::string_view::npos;
        const int from = reached.isOpen() ? reached.get() : folder;
        const auto* name = component.empty() ? "." : component.c_str();
        TWDescriptor next(openat(from, name, (last ? flags : O_PATH) | FolderFlags));
        if (!next.isOpen() || last)
            return next;
        reached = std::move(next);
    }
    errno = ENOENT;
    return TWDescriptor();
}

// Compares the devices as well, because kernels before 5.8 cannot tell where something is mounted.
TWDescriptor openSameMount(int folder, const char* name, int flags)
{
    TWDescriptor opened(openat(folder, name, flags | FolderFlags));
    struct statx from = {};
    struct statx to = {};
    if (!opened.isOpen() || statx(folder, "", AT_EMPTY_PATH, STATX_INO, &from) != 0
        || statx(opened.get(), "", AT_EMPTY_PATH, STATX_INO, &to) != 0)
        return TWDescriptor();
    const bool sameDevice = from.stx_dev_major == to.stx_dev_major && from.stx_dev_minor == to.stx_dev_minor;
    if (sameDevice && !TWIsMountRoot(std::string_view(name) == ".." ? from : to))
        return opened;
    opened.close();
    errno = EXDEV;
    return opened;
}

// Sets errno if this is not a regular file. A symbolic link passes, because opening it fails.
bool isRegularOrLink(const struct stat& found)
{
    errno = S_ISDIR(found.st_mode) ? EISDIR : EINVAL;
    return S_ISREG(found.st_mode) || S_ISLNK(found.st_mode);
}

}

TWDescriptor TWLinuxOpenWithoutLinks(int folder, const char* path, int flags)
{
    if (auto opened = openRestricted(folder, path, flags, RESOLVE_NO_SYMLINKS))
        return std::move(*opened);
    return openByComponents(folder, path, flags);
}

TWDescriptor TWLinuxOpenChild(int folder, const char* name, int flags)
{
    if (auto opened = openRestricted(folder, name, flags, RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV))
        return std::move(*opened);
    return openSameMount(folder, name, flags);
}

TWDescriptor TWLinuxOpenRegular(int folder, const char* path, struct stat& found)
{
    // Looks first, because opening a pipe would disturb whoever writes to it. If something else has taken the file's
    // place when it is opened, nothing is read from that, and opening it does not block.
    if (fstatat(folder, path, &found, AT_SYMLINK_NOFOLLOW) != 0 || !isRegularOrLink(found))
        return TWDescriptor();
    TWDescriptor file(openat(folder, path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (file.isOpen() && fstat(file.get(), &found) == 0 && isRegularOrLink(found))
        return file;
    const int error = errno;
    file.close();
    errno = error;
    return file;
}
