#include "TWTreeEraser.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>

namespace {

constexpr char MountPoint[] = "another file system is mounted here, kept";
constexpr char Replaced[] = "replaced by something else meanwhile, kept";
constexpr char ChangedLate[] = "changed by another program while it was being removed, kept";
constexpr char SeveralNames[] = "the file has several names; this one was removed, the file was not overwritten";
constexpr char Vanished[] = "was gone before it could be overwritten";
constexpr char MovedAway[] = "moved meanwhile, kept";
constexpr char Moved[] = "moved elsewhere meanwhile, stopped";

// How many of the innermost folders stay open. Outer ones, except the working directory, are opened again through "..".
constexpr std::size_t OpenLevels = 32;

// O_NONBLOCK: opening must not hang if the name becomes a pipe at the last moment.
constexpr int SafeFlags = O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
constexpr int FolderFlags = O_RDONLY | O_DIRECTORY | SafeFlags;

// Reads all names at once, because a listing that continues while entries are removed may miss some. Returns 0 or the
// errno.
int listNames(int folder, std::vector<std::string>& names)
{
    alignas(dirent64) char buffer[32 * 1024];
    for (;;) {
        const ssize_t length = getdents64(folder, buffer, sizeof buffer);
        if (length <= 0)
            return length < 0 ? errno : 0;
        for (ssize_t at = 0; at < length;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + at);
            at += entry->d_reclen;
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..")
                names.emplace_back(name);
        }
    }
}

int writeRefusal(int folder)
{
    return faccessat(folder, ".", W_OK | X_OK, 0) == 0 ? 0 : errno;
}

}

TWTreeEraser::TWTreeEraser(TWOverwriter& overwriter, TWReport& report, const TWHeldSignals& signals)
    : overwriter_(overwriter)
    , report_(report)
    , signals_(signals)
{
}

bool TWTreeEraser::erase(const std::string& name)
{
    const bool gone = eraseAll(name);
    for (const auto& [identity, path] : linkedElsewhere_)
        report_.notice(path, SeveralNames);
    return gone;
}

bool TWTreeEraser::eraseAll(const std::string& name)
{
    failed_ = !openWorkingDirectory(name);
    while (!levels_.empty()) {
        std::vector<std::string>& pending = levels_.back().pending;
        if (pending.empty()) {
            leaveFolder();
            continue;
        }
        if (signals_.pending())
            return false;
        const std::string next = std::move(pending.back());
        pending.pop_back();
        eraseEntry(next);
    }
    return !failed_;
}

// Makes the working directory the outermost level, with the given name as its only pending one.
bool TWTreeEraser::openWorkingDirectory(const std::string& name)
{
    Level start;
    start.name = ".";
    start.pending.push_back(name);
    start.folder = TWDescriptor(open(".", FolderFlags));
    // The folder may be searched but not listed.
    if (!start.folder.isOpen() && errno == EACCES)
        start.folder = TWDescriptor(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (const int error = start.folder.isOpen() ? start.facts.read(start.folder.get(), "") : errno) {
        report_.failure("./" + name, strerror(error));
        return false;
    }
    start.refusal = writeRefusal(start.folder.get());
    levels_.push_back(std::move(start));
    return true;
}

void TWTreeEraser::eraseEntry(const std::string& name)
{
    const Level& level = levels_.back();
    TWEntryFacts facts;
    if (const int error = facts.read(here(), name.c_str())) {
        if (error != ENOENT)
            keep(name, error);
        else if (levels_.size() > 1) // it was listed
            report_.notice(pathOf(name), Vanished);
        return;
    }
    // Compares devices for folders only, because a union file system shows files with devices of their own.
    if (facts.mountPoint || (facts.isFolder() && facts.device != level.facts.device))
        return keep(name, MountPoint);
    if (level.refusal)
        return keep(name, level.refusal);
    if (facts.isFolder())
        return enterFolder(name, facts);
    if (facts.isFile() && facts.links == 1)
        return eraseFile(name, facts);
    if (removeName(name, 0) && facts.isFile())
        linkedElsewhere_.emplace(facts.identity(), TWReport::shown(pathOf(name)));
}

void TWTreeEraser::eraseFile(const std::string& name, TWEntryFacts facts)
{
    // Checked before the file is touched: what cannot be removed must not be overwritten.
    int error = removalRefusal(name);
    TWDescriptor file = error == 0 ? openForWriting(name, facts, error) : TWDescriptor();
    TWEntryFacts opened;
    if (error == 0)
        error = opened.read(file.get(), "");
    if (error != 0)
        return keep(name, error);
    if (!opened.isSameAs(facts) || opened.links != 1)
        return keep(name, Replaced);
    if (const char* problem = overwriter_.overwrite(file.get()))
        return keep(name, problem);
    // Closed first, because NFS and FUSE give an open file a hidden name instead of removing it.
    if (file.close() != 0)
        return keep(name, errno);
    facts.size = overwriter_.size();
    removeSame(name, facts);
    linkedElsewhere_.erase(facts.identity());
}

// Returns 0 if the kernel would let this process unlink the entry, which must not be a folder, else the errno. It makes
// a call that cannot succeed: the kernel refuses to remove a file as if it were a folder, but only after it has checked
// everything that unlinking needs. That is the folder's mode and access list, the sticky bit, capabilities, append-only
// and immutable folders and files, read-only mounts and swap files. The servers of network and FUSE file systems may
// have further rules; a file that they do not remove stays, overwritten, under its name.
int TWTreeEraser::removalRefusal(const std::string& name) const
{
    // Success means that an empty folder has just replaced the file. That folder is now gone, and opening the file will
    // fail.
    return unlinkat(here(), name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOTDIR ? 0 : errno;
}

TWDescriptor TWTreeEraser::openForWriting(const std::string& name, const TWEntryFacts& facts, int& error)
{
    TWDescriptor file(openat(here(), name.c_str(), O_WRONLY | SafeFlags));
    error = file.isOpen() ? 0 : errno;
    if (error == EACCES && !(facts.mode & S_IWUSR))
        return openWriteProtected(name, facts, error);
    return file;
}

// Changes the mode while it opens the file, through a descriptor whose identity was checked, so that it cannot change
// another file.
TWDescriptor TWTreeEraser::openWriteProtected(const std::string& name, const TWEntryFacts& facts, int& error)
{
    const TWDescriptor handle(openat(here(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    TWEntryFacts opened;
    if (!handle.isOpen() || opened.read(handle.get(), "") != 0 || !opened.isSameAs(facts) || opened.links != 1)
        return TWDescriptor();
    const std::string path = "/proc/self/fd/" + std::to_string(handle.get());
    if (chmod(path.c_str(), (facts.mode & 07777) | S_IWUSR) != 0)
        return TWDescriptor();
    TWDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    error = file.isOpen() ? 0 : errno;
    chmod(path.c_str(), facts.mode & 07777);
    return file;
}

void TWTreeEraser::enterFolder(const std::string& name, const TWEntryFacts& facts)
{
    Level level;
    level.name = name;
    level.folder = TWDescriptor(openat(here(), name.c_str(), FolderFlags));
    if (!level.folder.isOpen()) {
        const int error = errno;
        // A folder that may not be read can still be removed if it is empty. Otherwise this call does nothing.
        if (error != EACCES || unlinkat(here(), name.c_str(), AT_REMOVEDIR) != 0)
            keep(name, error);
        return;
    }
    int error = level.facts.read(level.folder.get(), "");
    if (error == 0 && !level.facts.isSameAs(facts))
        return keep(name, Replaced);
    if (error == 0)
        error = listNames(level.folder.get(), level.pending);
    if (error != 0)
        return keep(name, error);
    level.refusal = writeRefusal(level.folder.get());
    pushLevel(std::move(level));
}

void TWTreeEraser::pushLevel(Level level)
{
    levels_.push_back(std::move(level));
    if (levels_.size() > OpenLevels + 1)
        levels_[levels_.size() - 1 - OpenLevels].folder.close();
}

void TWTreeEraser::leaveFolder()
{
    const Level left = std::move(levels_.back());
    levels_.pop_back();
    // In a folder that stays, removed names must not come back after a system crash. For a folder that is removed,
    // flushing its parent is enough. A failure loses nothing.
    if (left.removedSome && (left.keptSome || levels_.empty()))
        fsync(left.folder.get());
    if (levels_.empty())
        return;
    if (!reopenFolder(levels_.back(), left)) {
        fail(left.name, Moved);
        levels_.clear();
        return;
    }
    if (left.keptSome)
        levels_.back().keptSome = true;
    else if (hasMovedAway(left))
        keep(left.name, MovedAway);
    else
        removeSame(left.name, left.facts);
}

// True if the folder still exists but no longer under its name.
bool TWTreeEraser::hasMovedAway(const Level& level) const
{
    TWEntryFacts now;
    return now.read(here(), level.name.c_str()) == ENOENT && now.read(level.folder.get(), "") == 0 && now.links > 0;
}

// Opens the folder again through ".." if it was closed to save descriptors. Fails if ".." leads to another folder.
bool TWTreeEraser::reopenFolder(Level& level, const Level& child)
{
    if (level.folder.isOpen())
        return true;
    TWDescriptor folder(openat(child.folder.get(), "..", FolderFlags));
    TWEntryFacts opened;
    if (!folder.isOpen() || opened.read(folder.get(), "") != 0 || !opened.isSameAs(level.facts))
        return false;
    level.folder = std::move(folder);
    return true;
}

// Removes an overwritten file or an emptied folder, but not what has replaced it in the meantime, and not a file whose
// size has changed since it was overwritten. Kept on purpose: a change in the microseconds between the check and the
// removal goes unnoticed, because no system call removes a name only if it still belongs to a certain file.
void TWTreeEraser::removeSame(const std::string& name, const TWEntryFacts& facts)
{
    TWEntryFacts now;
    const int error = now.read(here(), name.c_str());
    if (error == ENOENT)
        return;
    if (error != 0 || !now.isSameAs(facts))
        return keep(name, Replaced);
    if (facts.isFile() && now.size != facts.size)
        return keep(name, ChangedLate);
    removeName(name, facts.isFolder() ? AT_REMOVEDIR : 0);
}

// Returns true if this call has removed the name.
bool TWTreeEraser::removeName(const std::string& name, int flags)
{
    if (unlinkat(here(), name.c_str(), flags) == 0)
        return levels_.back().removedSome = true;
    if (errno != ENOENT)
        keep(name, errno);
    return false;
}

void TWTreeEraser::keep(const std::string& name, const char* reason)
{
    fail(name, reason);
    levels_.back().keptSome = true;
}

void TWTreeEraser::keep(const std::string& name, int error)
{
    keep(name, strerror(error));
}

void TWTreeEraser::fail(const std::string& name, const char* reason)
{
    report_.failure(pathOf(name), reason);
    failed_ = true;
}

std::string TWTreeEraser::pathOf(const std::string& name) const
{
    std::string path;
    for (const Level& level : levels_)
        path += level.name + "/";
    return path + name;
}
