#include "platform/linux/TWLinuxOpen.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <string_view>

namespace {

constexpr int FolderFlags = O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

// Kernels before 5.6 have no openat2(), and some sandboxes forbid system calls that they do not know.
std::atomic<bool> hasRestrictedOpen = true;

int openRestricted(int folder, const char* path, int flags, std::uint64_t restrictions)
{
    open_how how{};
    how.flags = static_cast<std::uint64_t>(flags | FolderFlags);
    how.resolve = restrictions;
    const auto descriptor = static_cast<int>(syscall(SYS_openat2, folder, path, &how, sizeof how));
    if (descriptor < 0 && (errno == ENOSYS || errno == EPERM))
        hasRestrictedOpen = false;
    return descriptor;
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

TWDescriptor openSameDevice(int folder, const char* name, int flags)
{
    TWDescriptor child(openat(folder, name, flags | FolderFlags));
    struct stat above;
    struct stat below;
    if (!child.isOpen() || fstat(folder, &above) != 0 || fstat(child.get(), &below) != 0)
        return TWDescriptor();
    if (above.st_dev == below.st_dev)
        return child;
    child.close();
    errno = EXDEV;
    return child;
}

}

TWDescriptor TWLinuxOpenWithoutLinks(int folder, const char* path, int flags)
{
    if (hasRestrictedOpen) {
        TWDescriptor opened(openRestricted(folder, path, flags, RESOLVE_NO_SYMLINKS));
        if (opened.isOpen() || hasRestrictedOpen)
            return opened;
    }
    return openByComponents(folder, path, flags);
}

TWDescriptor TWLinuxOpenChild(int folder, const char* name, int flags)
{
    if (hasRestrictedOpen) {
        TWDescriptor opened(openRestricted(folder, name, flags, RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV));
        if (opened.isOpen() || hasRestrictedOpen)
            return opened;
    }
    return openSameDevice(folder, name, flags);
}
