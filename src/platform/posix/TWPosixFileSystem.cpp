#include "platform/posix/TWPosixFileSystem.h"

#include "platform/TWRunLoop.h"
#include "platform/posix/TWDescriptor.h"
#include "platform/posix/TWPosixOpenFolder.h"
#include "support/TWPath.h"

#include <climits>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <set>

namespace {

constexpr mode_t NewFolderMode = 0700;
constexpr std::uint64_t BlockSize = 512; // the unit of st_blocks on every file system
constexpr std::size_t CopySize = std::size_t{ 64 } * 1024;
constexpr int MostLinks = 40; // as the system itself follows

// Trailing slashes cut. A NUL inside would make the system see another, shorter path: such a path becomes the empty
// one, which never exists.
std::string systemPath(const std::string& path)
{
    return path.find('\0') == std::string::npos ? TWPath::withoutTrailingSlashes(path) : std::string();
}

// What the system can be asked about: a path relative to a folder.
struct Place {
    TWDescriptor holder;
    std::string path;
    int error = 0; // errno, when the way there could not be gone

    int folder() const { return holder.isOpen() ? holder.get() : AT_FDCWD; }
};

// A path longer than the system takes is reached in parts: what lies so deep must not count as gone.
Place placeOf(const std::string& path)
{
    Place place{ TWDescriptor(), systemPath(path), 0 };
    while (place.path.size() >= PATH_MAX) {
        const std::size_t slash = place.path.rfind('/', PATH_MAX - 1);
        if (slash == std::string::npos || slash == 0)
            break;
        const std::string upper = place.path.substr(0, slash);
        place.path.erase(0, place.path.find_first_not_of('/', slash));
        const int opened = openat(place.folder(), upper.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (opened < 0)
            return { TWDescriptor(), std::string(), errno };
        place.holder = TWDescriptor(opened);
    }
    return place;
}

bool askStatus(const Place& place, TWLinkAtEnd link, struct stat& found)
{
    const int flags = link == TWLinkAtEnd::Follow ? 0 : AT_SYMLINK_NOFOLLOW;
    if (place.error != 0) {
        errno = place.error;
        return false;
    }
    return fstatat(place.folder(), place.path.c_str(), &found, flags) == 0;
}

TWFileKind kindOf(mode_t mode)
{
    if (S_ISREG(mode))
        return TWFileKind::File;
    if (S_ISDIR(mode))
        return TWFileKind::Folder;
    return S_ISLNK(mode) ? TWFileKind::Link : TWFileKind::Other;
}

// Adds up one tree, keeping the folders on the way down open.
class TreeCounter final {
public:
    explicit TreeCounter(const TWCancellation& cancellation)
        : cancellation_(cancellation)
    {
    }

    void countTree(std::unique_ptr<TWPosixOpenFolder> top)
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

    void count(const struct stat& found)
    {
        if (size_.items++ == 0)
            device_ = found.st_dev;
        const bool severalNames = !S_ISDIR(found.st_mode) && found.st_nlink > 1;
        if (found.st_dev == device_ && (!severalNames || counted_.insert(found.st_ino).second))
            size_.bytes += static_cast<std::uint64_t>(found.st_blocks) * BlockSize;
    }

    const TWTreeSize& size() const { return size_; }

private:
    struct Level {
        std::unique_ptr<TWPosixOpenFolder> folder;
        std::size_t next = 0;
    };

    void push(std::unique_ptr<TWPosixOpenFolder> folder)
    {
        if (folder)
            levels_.push_back({ std::move(folder) });
    }

    void countEntry(const TWPosixOpenFolder& folder, const TWFolderEntry& entry)
    {
        struct stat found;
        if (fstatat(folder.descriptor(), entry.name.data(), &found, AT_SYMLINK_NOFOLLOW) != 0)
            return;
        count(found);
        if (S_ISDIR(found.st_mode) && found.st_dev == device_)
            push(folder.openPosixFolder(entry));
    }

    const TWCancellation& cancellation_;
    std::vector<Level> levels_;
    std::set<ino_t> counted_; // files with several names
    dev_t device_ = 0;
    TWTreeSize size_;
};

}

std::optional<TWFileFacts> TWPosixFileSystem::facts(const std::string& path, TWLinkAtEnd link) const
{
    struct stat found;
    if (!askStatus(placeOf(path), link, found))
        return std::nullopt;
    return TWFileFacts{ kindOf(found.st_mode), static_cast<std::uint64_t>(found.st_blocks) * BlockSize, found.st_dev,
        found.st_ino, found.st_nlink };
}

bool TWPosixFileSystem::exists(const std::string& path) const
{
    struct stat found;
    return askStatus(placeOf(path), TWLinkAtEnd::DoNotFollow, found)
        || (errno != ENOENT && errno != ENOTDIR && errno != ENAMETOOLONG);
}

static std::unique_ptr<TWPosixOpenFolder> openPosixFolder(const std::string& path, TWLinkAtEnd link)
{
    const Place place = placeOf(path);
    if (place.error != 0) {
        errno = place.error;
        return nullptr;
    }
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (link == TWLinkAtEnd::Follow ? 0 : O_NOFOLLOW);
    return TWPosixOpenFolder::list(
        TWDescriptor(openat(place.folder(), place.path.c_str(), flags)), TWPath::lastComponent(place.path));
}

std::unique_ptr<TWOpenFolder> TWPosixFileSystem::openFolder(const std::string& path, TWLinkAtEnd link, int* error) const
{
    auto folder = openPosixFolder(path, link);
    if (error)
        *error = folder ? 0 : errno;
    return folder;
}

TWTreeSize TWPosixFileSystem::treeSize(const std::string& path, const TWCancellation& cancellation) const
{
    TreeCounter counter(cancellation);
    struct stat found;
    if (askStatus(placeOf(path), TWLinkAtEnd::DoNotFollow, found)) {
        counter.count(found);
        if (S_ISDIR(found.st_mode))
            counter.countTree(openPosixFolder(path, TWLinkAtEnd::DoNotFollow));
    }
    return counter.size();
}

static std::optional<std::string> resolved(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> found(realpath(path.c_str(), nullptr), &std::free);
    return found ? std::optional<std::string>(found.get()) : std::nullopt;
}

std::optional<std::string> TWPosixFileSystem::realPath(const std::string& path) const
{
    const std::string whole = systemPath(path);
    const std::string_view name = TWPath::lastComponent(whole);
    if (whole.empty() || name.empty() || name == "." || name == "..")
        return resolved(whole);
    const std::string_view parent = TWPath::parent(whole);
    auto real = resolved(parent.empty() ? "." : std::string(parent));
    if (!real || !isFolder(*real))
        return std::nullopt;
    if (*real != "/")
        *real += '/';
    return real->append(name);
}

int TWPosixFileSystem::makeFolders(const std::string& path) const
{
    const std::string whole = systemPath(path);
    if (whole.empty())
        return ENOENT;
    for (std::size_t end = 0; end != whole.size();) {
        end = std::min(whole.find('/', end + 1), whole.size());
        const std::string part = whole.substr(0, end);
        if (isFolder(part, TWLinkAtEnd::Follow) || mkdir(part.c_str(), NewFolderMode) == 0)
            continue;
        const int error = errno;
        if (!isFolder(part, TWLinkAtEnd::Follow)) // someone else may have made it meanwhile
            return error;
    }
    return 0;
}

// Opens a plain file for reading; a pipe is refused instead of being waited for. 0, or the errno.
static int openForReading(const std::string& path, TWDescriptor& file, struct stat& facts)
{
    file = TWDescriptor(open(systemPath(path).c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen() || fstat(file.get(), &facts) != 0)
        return errno;
    if (S_ISDIR(facts.st_mode))
        return EISDIR;
    return S_ISREG(facts.st_mode) ? 0 : EINVAL;
}

// The number of bytes read, 0 at the end, or -1.
static ssize_t readSome(int file, char* buffer, std::size_t size)
{
    ssize_t length;
    do
        length = ::read(file, buffer, size);
    while (length < 0 && errno == EINTR);
    return length;
}

static int writeAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t length = ::write(file, bytes.data(), bytes.size());
        if (length >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(length));
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

TWFileSystem::Contents TWPosixFileSystem::read(const std::string& path, std::size_t limit) const
{
    TWDescriptor file;
    struct stat facts;
    Contents contents{ openForReading(path, file, facts), {} };
    char buffer[CopySize];
    while (contents.error == 0) { // the size in facts is not to be trusted: the file can grow, and in /proc it is 0
        const ssize_t length = readSome(file.get(), buffer, sizeof buffer);
        if (length == 0)
            return contents;
        if (length < 0)
            contents.error = errno;
        else if (static_cast<std::size_t>(length) > limit - contents.bytes.size())
            contents.error = EFBIG;
        else
            contents.bytes.append(buffer, static_cast<std::size_t>(length));
    }
    contents.bytes.clear();
    return contents;
}

// Where a write to the path must go: a link stays a link, also one whose target does not exist yet. 0, or the errno.
static int followLinks(std::string& path)
{
    char target[PATH_MAX];
    for (int links = 0; links < MostLinks; ++links) {
        const ssize_t length = readlink(path.c_str(), target, sizeof target);
        if (length < 0)
            return errno == EINVAL || errno == ENOENT ? 0 : errno; // no link, or nothing there
        const std::string_view next(target, static_cast<std::size_t>(length));
        const std::size_t nameStart = path.rfind('/') + 1;
        path = TWPath::withoutTrailingSlashes(
            next.starts_with('/') ? std::string(next) : path.substr(0, nameStart).append(next));
    }
    return ELOOP;
}

// Gives the new file the rights and the owner of the old one, if there is an old one. 0, or the errno.
static int takeOverRights(const std::string& old, int file)
{
    struct stat facts;
    if (lstat(old.c_str(), &facts) != 0)
        return errno == ENOENT ? 0 : errno;
    if (!S_ISREG(facts.st_mode))
        return S_ISDIR(facts.st_mode) ? EISDIR : EINVAL;
    // Only root can hand the file back to its owner, and only root needs to.
    if (geteuid() == 0 && fchown(file, facts.st_uid, facts.st_gid) != 0)
        return errno;
    return fchmod(file, facts.st_mode & 07777) == 0 ? 0 : errno;
}

// Fills the file and brings it to the disk. 0, or the errno.
static int finishFile(TWDescriptor& file, std::string_view bytes)
{
    if (const int error = writeAll(file.get(), bytes))
        return error;
    return fsync(file.get()) == 0 && file.close() == 0 ? 0 : errno;
}

int TWPosixFileSystem::writeAtomically(const std::string& path, std::string_view bytes) const
{
    std::string target = systemPath(path);
    if (target.empty())
        return ENOENT;
    if (const int error = followLinks(target))
        return error;
    const std::string folder = target.substr(0, target.rfind('/') + 1);
    std::string temporary
        = folder + ".tidewell-XXXXXX"; // a fixed length: the file's own name may be as long as is allowed
    TWDescriptor file(mkostemp(temporary.data(), O_CLOEXEC)); // mode 0600
    if (!file.isOpen())
        return errno;
    int error = takeOverRights(target, file.get());
    if (error == 0)
        error = finishFile(file, bytes);
    if (error == 0 && rename(temporary.c_str(), target.c_str()) != 0)
        error = errno;
    if (error != 0) {
        unlink(temporary.c_str());
        return error;
    }
    // The new file is in place, whatever this says; not every file system can do it.
    fsync(TWDescriptor(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)).get());
    return 0;
}

static int copyBytes(const TWDescriptor& from, TWDescriptor& to)
{
    char buffer[CopySize];
    for (;;) {
        const ssize_t length = readSome(from.get(), buffer, sizeof buffer);
        if (length < 0)
            return errno;
        if (length == 0)
            return finishFile(to, {});
        if (const int error = writeAll(to.get(), { buffer, static_cast<std::size_t>(length) }))
            return error;
    }
}

int TWPosixFileSystem::copyFile(const std::string& from, const std::string& to) const
{
    TWDescriptor source;
    struct stat facts { };
    if (const int error = openForReading(from, source, facts))
        return error;
    const std::string copyPath = systemPath(to);
    TWDescriptor copy(open(copyPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, facts.st_mode & 0777));
    if (!copy.isOpen())
        return errno;
    const int error = copyBytes(source, copy);
    if (error != 0)
        unlink(copyPath.c_str());
    return error;
}
