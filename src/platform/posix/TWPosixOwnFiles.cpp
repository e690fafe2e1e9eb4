#include "platform/posix/TWPosixOwnFiles.h"

#include "platform/posix/TWDescriptor.h"
#include "platform/posix/TWFileIO.h"
#include "platform/posix/TWFolderOwner.h"
#include "platform/posix/TWTemporaryFile.h"
#include "support/TWPath.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>

namespace {

constexpr mode_t NewFolderMode = 0700;
constexpr int MostLinks = 40; // as many as the kernel follows
constexpr int MostDamagedFiles = 99;

bool isFolder(const std::string& path)
{
    struct stat found;
    return stat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode);
}

}

static int makeFolder(const std::string& path)
{
    if (mkdir(path.c_str(), NewFolderMode) != 0)
        return errno;
    const TWDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return folder.isOpen() ? TWGiveToFolderOwner(folder.get(), std::string(TWPath::parent(path))) : errno;
}

int TWPosixOwnFiles::makeFolders(const std::string& path) const
{
    const std::string whole = TWPath::systemPath(path);
    if (whole.empty())
        return ENOENT;
    for (std::size_t end = 0; end != whole.size();) {
        end = std::min(whole.find('/', end + 1), whole.size());
        const std::string part = whole.substr(0, end);
        if (isFolder(part))
            continue;
        const int error = makeFolder(part);
        if (error != 0 && !isFolder(part)) // another process may have made it in the meantime
            return error;
    }
    return 0;
}

// True if the path or one of its parents is a dangling symbolic link, for example to a USB stick that is not plugged
// in. Then the file may well exist, and must not be taken to be missing.
static bool isBehindDanglingLink(const std::string& path)
{
    for (std::size_t end = 0; end != path.size();) {
        end = std::min(path.find('/', end + 1), path.size());
        const std::string part = path.substr(0, end);
        struct stat facts;
        if (lstat(part.c_str(), &facts) == 0 && S_ISLNK(facts.st_mode) && stat(part.c_str(), &facts) != 0)
            return true;
    }
    return false;
}

// Opens a regular file that is no longer than the limit. Does not block on a pipe but refuses it. Returns 0 or the
// errno.
static int openForReading(const std::string& path, std::size_t limit, TWDescriptor& file, struct stat& facts)
{
    file = TWDescriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.isOpen() || fstat(file.get(), &facts) != 0)
        return errno;
    if (S_ISDIR(facts.st_mode))
        return EISDIR;
    if (!S_ISREG(facts.st_mode))
        return EINVAL;
    return facts.st_size > static_cast<off_t>(limit) ? EFBIG : 0;
}

int TWPosixOwnFiles::readPieces(
    const std::string& path, std::size_t limit, const std::function<bool(std::string_view)>& take) const
{
    const std::string whole = TWPath::systemPath(path);
    TWDescriptor file;
    struct stat facts { };
    const int error = openForReading(whole, limit, file, facts);
    if ((error == ENOENT || error == ENOTDIR) && isBehindDanglingLink(whole))
        return ENOLINK;
    return error != 0 ? error : TWReadAll(file.get(), limit, take);
}

TWOwnFiles::Contents TWPosixOwnFiles::read(const std::string& path, std::size_t limit) const
{
    Contents contents;
    contents.error = readPieces(path, limit, [&](std::string_view piece) {
        contents.bytes += piece;
        return true;
    });
    if (contents.error != 0)
        contents.bytes.clear();
    return contents;
}

// Replaces the path by that of the file that its symbolic links lead to, even if that file does not exist yet. Returns
// 0 or the errno.
static int followLinks(std::string& path)
{
    char target[PATH_MAX];
    for (int links = 0; links < MostLinks; ++links) {
        const ssize_t length = readlink(path.c_str(), target, sizeof target);
        if (length < 0)
            return errno == EINVAL || errno == ENOENT ? 0 : errno; // not a link, or nothing there
        const std::string_view next(target, static_cast<std::size_t>(length));
        const std::size_t nameStart = path.rfind('/') + 1;
        path = TWPath::withoutTrailingSlashes(
            next.starts_with('/') ? std::string(next) : path.substr(0, nameStart).append(next));
    }
    return ELOOP;
}

// Gives the new file the mode and owner of the old one or, if there is no old one, the owner of the folder. Returns 0
// or the errno.
static int takeOverRights(const std::string& old, int file)
{
    struct stat facts;
    if (lstat(old.c_str(), &facts) != 0)
        return errno == ENOENT ? TWGiveToFolderOwner(file, std::string(TWPath::parent(old))) : errno;
    if (!S_ISREG(facts.st_mode))
        return S_ISDIR(facts.st_mode) ? EISDIR : EINVAL;
    // Only root can hand the file back to its owner, and only root needs to.
    if (geteuid() == 0 && fchown(file, facts.st_uid, facts.st_gid) != 0)
        return errno;
    return fchmod(file, facts.st_mode & 07777) == 0 ? 0 : errno;
}

int TWPosixOwnFiles::writeAtomically(const std::string& path, std::string_view bytes) const
{
    std::string target = TWPath::systemPath(path);
    if (target.empty())
        return ENOENT;
    if (const int error = followLinks(target))
        return error;
    TWTemporaryFile file(target);
    if (const int error = file.create())
        return error;
    if (const int error = takeOverRights(target, file.descriptor()))
        return error;
    if (const int error = TWWriteAll(file.descriptor(), bytes))
        return error;
    if (fsync(file.descriptor()) != 0)
        return errno;
    if (const int error = file.replaceTarget())
        return error;
    // Ignores errors: the new file is in place, and not every file system can flush a folder.
    const std::string folder(TWPath::parent(target));
    fsync(TWDescriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)).get());
    return 0;
}

bool TWPosixOwnFiles::canOthersRedirect(const std::string& realPath) const
{
    const auto isSafe = [](const std::string& folder, bool isParent) {
        struct stat facts;
        if (lstat(folder.c_str(), &facts) != 0)
            return errno == ENOENT;
        const bool isTrusted = facts.st_uid == geteuid() || facts.st_uid == 0;
        return S_ISDIR(facts.st_mode) && isTrusted
            && ((facts.st_mode & S_IWOTH) == 0 || (isParent && (facts.st_mode & S_ISVTX) != 0));
    };
    std::string folder = TWPath::systemPath(realPath);
    bool safe = isSafe(folder, false);
    while (safe && folder.size() > 1) {
        folder = TWPath::parent(folder);
        safe = isSafe(folder, true);
    }
    return !safe;
}

void TWPosixOwnFiles::removeLeftovers(const std::string& folder) const
{
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(TWPath::systemPath(folder).c_str()), closedir);
    while (const dirent* entry = stream ? readdir(stream.get()) : nullptr) {
        if (TWTemporaryFile::isName(entry->d_name))
            TWTemporaryFile::removeLeftover(folder + "/" + entry->d_name);
    }
}

static int copyFile(const std::string& from, const std::string& to, std::size_t limit)
{
    TWDescriptor source;
    struct stat facts { };
    if (const int error = openForReading(from, limit, source, facts))
        return error;
    const TWDescriptor copy(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, facts.st_mode & 0777));
    if (!copy.isOpen())
        return errno;
    int error = geteuid() == 0 && fchown(copy.get(), facts.st_uid, facts.st_gid) != 0 ? errno : 0;
    const int readError = TWReadAll(source.get(), limit, [&](std::string_view piece) {
        if (error == 0)
            error = TWWriteAll(copy.get(), piece);
        return error == 0;
    });
    if (error == 0)
        error = readError;
    if (error == 0 && fsync(copy.get()) != 0)
        error = errno;
    if (error != 0)
        unlink(to.c_str());
    return error;
}

// Makes a hard link, or a copy where that is impossible. Returns 0 or the errno.
static int giveSecondName(const std::string& path, const std::string& name, std::size_t limit)
{
    if (link(path.c_str(), name.c_str()) == 0)
        return 0;
    const int error = errno;
    struct stat file { };
    struct stat named { };
    const bool hasName = error == EEXIST && lstat(path.c_str(), &file) == 0 && lstat(name.c_str(), &named) == 0
        && file.st_dev == named.st_dev && file.st_ino == named.st_ino; // it got the name before a write that failed
    if (hasName)
        return 0;
    const bool impossible = error == EPERM || error == EOPNOTSUPP || error == ENOSYS || error == EMLINK;
    return impossible ? copyFile(path, name, limit) : error;
}

int TWPosixOwnFiles::keepDamaged(const std::string& path, std::size_t limit, std::string& kept) const
{
    std::string target = TWPath::systemPath(path);
    struct stat facts;
    if (const int error = followLinks(target))
        return error;
    if (lstat(target.c_str(), &facts) != 0)
        return errno;
    if (!S_ISREG(facts.st_mode))
        return S_ISDIR(facts.st_mode) ? EISDIR : EINVAL;
    kept = target + ".damaged";
    int error = giveSecondName(target, kept, limit);
    for (int number = 2; error == EEXIST && number <= MostDamagedFiles; ++number) {
        kept = target + ".damaged." + std::to_string(number);
        error = giveSecondName(target, kept, limit);
    }
    return error;
}
