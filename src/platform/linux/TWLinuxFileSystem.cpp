#include "platform/linux/TWLinuxFileSystem.h"

#include "platform/linux/TWLinuxFacts.h"
#include "platform/linux/TWLinuxHeldFolder.h"
#include "platform/linux/TWLinuxOpen.h"
#include "platform/linux/TWLinuxOpenFile.h"
#include "platform/linux/TWLinuxOpenFolder.h"
#include "support/TWPath.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

namespace {

// A path in a form that system calls accept: relative to an open folder.
struct Place {
    TWDescriptor holder;
    std::string path;

    int folder() const { return holder.isOpen() ? holder.get() : AT_FDCWD; }
};

enum class Links { Follow, Refuse };

// Walks a path that exceeds PATH_MAX in parts, so that what it names does not count as gone. On failure the place has
// an empty path and errno is set.
Place placeOf(const std::string& path, Links links)
{
    Place place{ TWDescriptor(), TWPath::systemPath(path) };
    if (place.path.empty())
        errno = ENOENT;
    while (place.path.size() >= PATH_MAX) {
        const std::size_t slash = place.path.rfind('/', PATH_MAX - 1);
        if (slash == std::string::npos || slash == 0)
            break;
        const std::string upper = place.path.substr(0, slash);
        place.path.erase(0, place.path.find_first_not_of('/', slash));
        auto opened = links == Links::Refuse
            ? TWLinuxOpenWithoutLinks(place.folder(), upper.c_str(), O_PATH)
            : TWDescriptor(openat(place.folder(), upper.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!opened.isOpen())
            return { TWDescriptor(), std::string() };
        place.holder = std::move(opened);
    }
    return place;
}

TWDescriptor openWithoutLinks(const std::string& realPath, int flags)
{
    const auto place = placeOf(realPath, Links::Refuse);
    return place.path.empty() ? TWDescriptor() : TWLinuxOpenWithoutLinks(place.folder(), place.path.c_str(), flags);
}

std::optional<std::string> resolved(const std::string& path, int& error)
{
    const std::unique_ptr<char, decltype(&std::free)> found(realpath(path.c_str(), nullptr), &std::free);
    error = found ? 0 : errno;
    return found ? std::optional<std::string>(found.get()) : std::nullopt;
}

}

TWFileLook TWLinuxFileSystem::look(const std::string& path, TWLinkAtEnd link) const
{
    struct stat found;
    const auto place = placeOf(path, Links::Follow);
    const int flags = link == TWLinkAtEnd::Follow ? 0 : AT_SYMLINK_NOFOLLOW;
    if (place.path.empty() || fstatat(place.folder(), place.path.c_str(), &found, flags) != 0)
        return TWFailedLook(errno);
    return { TWPresence::There, 0, TWFactsFrom(found) };
}

std::optional<std::string> TWLinuxFileSystem::linkTarget(const std::string& path) const
{
    const auto place = placeOf(path, Links::Follow);
    char target[PATH_MAX]; // no link is longer
    const auto length = place.path.empty() ? -1 : readlinkat(place.folder(), place.path.c_str(), target, sizeof target);
    return length < 0 ? std::nullopt : std::optional(std::string(target, static_cast<std::size_t>(length)));
}

std::unique_ptr<TWOpenFolder> TWLinuxFileSystem::openFolder(
    const std::string& realPath, int& error, const TWCancellation* cancellation) const
{
    return TWLinuxOpenFolder::list(openWithoutLinks(realPath, O_RDONLY),
        TWPath::lastComponent(TWPath::systemPath(realPath)), nullptr, cancellation, error);
}

std::unique_ptr<TWOpenFile> TWLinuxFileSystem::openFile(const std::string& path, int& error) const
{
    const auto place = placeOf(path, Links::Follow);
    error = place.path.empty() ? errno : 0;
    return error == 0 ? TWLinuxOpenFile::open(place.folder(), place.path.c_str(), error) : nullptr;
}

std::unique_ptr<TWHeldFolder> TWLinuxFileSystem::holdFolder(const std::string& realPath, int& error) const
{
    return TWLinuxHeldFolder::hold(openWithoutLinks(realPath, O_PATH), error);
}

std::optional<std::string> TWLinuxFileSystem::realPath(const std::string& path, TWLinkAtEnd link, int* error) const
{
    int ignored = 0;
    int& reason = error ? *error : ignored;
    const std::string whole = TWPath::systemPath(path);
    const std::string_view name = TWPath::lastComponent(whole);
    if (link == TWLinkAtEnd::Follow || whole.empty() || name.empty() || name == "." || name == "..")
        return resolved(whole, reason);
    auto real = resolved(std::string(TWPath::parent(whole)) + "/.", reason);
    if (!real)
        return std::nullopt;
    if (*real != "/")
        *real += '/';
    return real->append(name);
}
