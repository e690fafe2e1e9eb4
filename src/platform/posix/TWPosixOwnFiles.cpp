#include "platform/posix/TWPosixOwnFiles.h"

#include "platform/posix/TWDescriptor.h"
#include "support/TWPath.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace {

constexpr mode_t NewFolderMode = 0700;
constexpr std::size_t CopySize = std::size_t{ 64 } * 1024;
constexpr int MostLinks = 40; // as the system itself follows

bool isFolder(const std::string& path)
{
    struct stat found;
    return stat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode);
}

}

int TWPosixOwnFiles::makeFolders(const std::string& path) const
{
    const std::string whole = TWPath::systemPath(path);
    if (whole.empty())
        return ENOENT;
    for (std::size_t end = 0; end != whole.size();) {
        end = std::min(whole.find('/', end + 1), whole.size());
        const std::string part = whole.substr(0, end);
        if (isFolder(part) || mkdir(part.c_str(), NewFolderMode) == 0)
            continue;
        const int error = errno;
        if (!isFolder(part)) // someone else may have made it meanwhile
            return error;
    }
    return 0;
}

// Opens a plain file for reading; a pipe is refused instead of being waited for. 0, or the errno.
static int openForReading(const std::string& path, TWDescriptor& file, struct stat& facts)
{
    file = TWDescriptor(open(TWPath::systemPath(path).c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
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

TWOwnFiles::Contents TWPosixOwnFiles::read(const std::string& path, std::size_t limit) const
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

int TWPosixOwnFiles::writeAtomically(const std::string& path, std::string_view bytes) const
{
    std::string target = TWPath::systemPath(path);
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

static int copyFile(const std::string& from, const std::string& to)
{
    TWDescriptor source;
    struct stat facts { };
    if (const int error = openForReading(from, source, facts))
        return error;
    TWDescriptor copy(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, facts.st_mode & 0777));
    if (!copy.isOpen())
        return errno;
    const int error = copyBytes(source, copy);
    if (error != 0)
        unlink(to.c_str());
    return error;
}

int TWPosixOwnFiles::keepDamaged(const std::string& path, std::string& kept) const
{
    kept = path + ".damaged";
    int error = copyFile(path, kept);
    for (int number = 2; error == EEXIST && number < 100; ++number) {
        kept = path + ".damaged." + std::to_string(number);
        error = copyFile(path, kept);
    }
    return error;
}
