#include "platform/linux/TWLinuxFileSystem.h"

#include "platform/TWRunLoop.h"
#include "platform/linux/TWLinuxFacts.h"
#include "platform/linux/TWLinuxHeldFolder.h"
#include "platform/linux/TWLinuxOpen.h"
#include "platform/linux/TWLinuxOpenFolder.h"
#include "support/TWPath.h"

#include <fcntl.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <set>

namespace {

// What the system can be asked about: a path relative to a folder.
struct Place {
    TWDescriptor holder;
    std::string path;

    int folder() const { return holder.isOpen() ? holder.get() : AT_FDCWD; }
};

enum class Links { Follow, Refuse };

// A path longer than the system accepts is reached in parts: what lies so deep must not count as gone. On failure the
// place has no path and errno is set.
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

// Adds up one tree, keeping the folders on the way down open.
class TreeCounter final {
public:
    explicit TreeCounter(const TWCancellation& cancellation)
        : cancellation_(cancellation)
    {
    }

    void countTree(std::unique_ptr<TWOpenFolder> top)
    {
        push(std::move(top));
        while (!levels_.empty() && !cancellation_.cancelled()) {
            Level& level = levels_.back();
            if (level.next == level.folder->entries().size())
                levels_.pop_back();
            else
                countEntry(*level.folder, level.folder->entries()[level.next++]);
        }
    }

    void count(const TWFileFacts& facts)
    {
        if (size_.items++ == 0)
            device_ = facts.identity.device;
        const bool severalNames = facts.kind != TWFileKind::Folder && facts.links > 1;
        if (facts.identity.device == device_ && (!severalNames || counted_.insert(facts.identity.inode).second))
            size_.bytes += facts.bytes;
    }

    const TWTreeSize& size() const { return size_; }

private:
    struct Level {
        std::unique_ptr<TWOpenFolder> folder;
        std::size_t next = 0;
    };

    void push(std::unique_ptr<TWOpenFolder> folder)
    {
        if (folder)
            levels_.push_back({ std::move(folder) });
    }

    void countEntry(const TWOpenFolder& folder, const TWFolderEntry& entry)
    {
        int error = 0;
        const auto found = folder.look(entry);
        if (!found.isThere())
            return;
        count(found.facts);
        if (found.isFolder())
            push(folder.openFolder(entry, error));
    }

    const TWCancellation& cancellation_;
    std::vector<Level> levels_;
    std::set<std::uint64_t> counted_; // files with several names
    std::uint64_t device_ = 0;
    TWTreeSize size_;
};

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

std::unique_ptr<TWOpenFolder> TWLinuxFileSystem::openFolder(const std::string& realPath, int& error) const
{
    return TWLinuxOpenFolder::list(
        openWithoutLinks(realPath, O_RDONLY), TWPath::lastComponent(TWPath::systemPath(realPath)), nullptr, error);
}

std::unique_ptr<TWHeldFolder> TWLinuxFileSystem::holdFolder(const std::string& realPath, int& error) const
{
    return TWLinuxHeldFolder::hold(openWithoutLinks(realPath, O_PATH), error);
}

TWTreeSize TWLinuxFileSystem::treeSize(const std::string& path, const TWCancellation& cancellation) const
{
    TreeCounter counter(cancellation);
    const auto found = look(path);
    int error = 0;
    if (found.isThere()) {
        counter.count(found.facts);
        if (found.isFolder())
            counter.countTree(openFolder(path, error));
    }
    return counter.size();
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
