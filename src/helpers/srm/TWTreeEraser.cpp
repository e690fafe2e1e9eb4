#include "TWTreeEraser.h"

#include "TWReport.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <string_view>

namespace {

constexpr char MountPoint[] = "another file system is mounted here, kept";
constexpr char SeveralNames[] = "the file has several names; this one was removed, the file was not overwritten";
constexpr char Replaced[] = "replaced by something else meanwhile, kept";
constexpr char Moved[] = "moved elsewhere meanwhile, stopped";

// How many of the innermost folders stay open; those further up are found again through "..".
constexpr std::size_t OpenLevels = 32;

// O_NONBLOCK: should a name become a pipe at the last moment, opening it must not hang.
constexpr int SafeFlags = O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
constexpr int FolderFlags = O_RDONLY | O_DIRECTORY | SafeFlags;

// All names at once: a listing that is read on while entries go may miss some. 0, or the errno.
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

TWTreeEraser::TWTreeEraser(TWOverwriter& overwriter, TWRandom& random)
    : overwriter_(overwriter)
    , random_(random)
{
}

bool TWTreeEraser::erase(const std::string& path)
{
    keptSome_ = false;
    if (!openStart(path))
        return !keptSome_;
    while (!levels_.empty()) {
        std::vector<std::string>& pending = levels_.back().pending;
        if (pending.empty()) {
            leaveFolder();
            continue;
        }
        const std::string name = std::move(pending.back());
        pending.pop_back();
        eraseEntry(name);
    }
    return !keptSome_;
}

// The path's parent becomes the outermost level, with the path's last name as its only pending one.
bool TWTreeEraser::openStart(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    Level start;
    start.name = path.substr(0, slash);
    start.pending.push_back(path.substr(slash + 1));
    // Links on the way to the parent are followed: whoever named the path meant the way as well.
    const std::string parent = start.name + "/";
    start.folder = TWDescriptor(open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!start.folder.isOpen() && errno == EACCES)
        start.folder = TWDescriptor(open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    const int error = start.folder.isOpen() ? start.facts.read(start.folder.get(), "") : errno;
    if (error == 0) {
        start.notWritable = writeRefusal(start.folder.get());
        levels_.push_back(std::move(start));
        return true;
    }
    if (error != ENOENT && error != ENOTDIR) {
        report(path, strerror(error));
        keptSome_ = true;
    }
    return false;
}

void TWTreeEraser::eraseEntry(const std::string& name)
{
    const Level& level = levels_.back();
    TWEntryFacts facts;
    if (const int error = facts.read(here(), name.c_str())) {
        if (error != ENOENT)
            keep(name, error);
        return;
    }
    // Only folders are asked for their device: a union of file systems shows files with devices of their own.
    if (facts.mountPoint || (facts.isFolder() && facts.device != level.facts.device))
        return keep(name, MountPoint);
    // Asked before anything is overwritten: what cannot be removed must not be spoiled either.
    if (level.notWritable)
        return keep(name, level.notWritable);
    if (facts.isFolder())
        return enterFolder(name, facts);
    if (facts.isFile() && facts.links == 1)
        return eraseFile(name, facts);
    if (removeName(name) && facts.isFile())
        say(name, SeveralNames);
}

void TWTreeEraser::eraseFile(const std::string& name, const TWEntryFacts& facts)
{
    int error = 0;
    TWDescriptor file = openForWriting(name, facts, error);
    if (!file.isOpen())
        return keep(name, error);
    TWEntryFacts opened;
    error = opened.read(file.get(), "");
    if (error == 0 && (!opened.isSameAs(facts) || opened.links != 1))
        return keep(name, Replaced);
    if (error == 0)
        error = overwriter_.overwrite(file.get(), opened);
    if (error == 0 && ftruncate(file.get(), 0) != 0)
        error = errno;
    if (error != 0) {
        if (!(facts.mode & S_IWUSR))
            fchmod(file.get(), facts.mode & 07777);
        return keep(name, error);
    }
    file.close();
    removeDisguised(name, facts);
}

TWDescriptor TWTreeEraser::openForWriting(const std::string& name, const TWEntryFacts& facts, int& error)
{
    TWDescriptor file(openat(here(), name.c_str(), O_WRONLY | SafeFlags));
    error = file.isOpen() ? 0 : errno;
    if (error == EACCES && !(facts.mode & S_IWUSR))
        return openWriteProtected(name, facts, error);
    return file;
}

// The mode is changed through a descriptor that was compared first, so that it cannot hit another file. On failure it
// is put back.
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
    if (!file.isOpen()) {
        error = errno;
        chmod(path.c_str(), facts.mode & 07777);
    }
    return file;
}

void TWTreeEraser::enterFolder(const std::string& name, const TWEntryFacts& facts)
{
    Level level;
    level.name = name;
    level.folder = TWDescriptor(openat(here(), name.c_str(), FolderFlags));
    if (!level.folder.isOpen()) {
        const int error = errno;
        // A folder that may not be read can still go when it is empty; if it is not, this does nothing.
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
    level.notWritable = writeRefusal(level.folder.get());
    pushLevel(std::move(level));
}

void TWTreeEraser::pushLevel(Level level)
{
    levels_.push_back(std::move(level));
    if (levels_.size() > OpenLevels)
        levels_[levels_.size() - 1 - OpenLevels].folder.close();
}

void TWTreeEraser::leaveFolder()
{
    const Level left = std::move(levels_.back());
    levels_.pop_back();
    // In a folder that stays, the names must not come back after a crash; one that goes is covered by the folder above.
    // A failure loses nothing.
    if (left.removedSome && (left.keptSome || levels_.empty()))
        fsync(left.folder.get());
    if (levels_.empty())
        return;
    if (!reopenFolder(levels_.back(), left)) {
        keep(left.name, Moved);
        levels_.clear();
        return;
    }
    if (left.keptSome)
        levels_.back().keptSome = true;
    else
        removeDisguised(left.name, left.facts);
}

// The folder may have been closed to save descriptors. What ".." leads to counts only if it is the folder that was
// left.
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

// For an overwritten file or a folder that should be empty: takes its name away, then itself.
void TWTreeEraser::removeDisguised(const std::string& name, const TWEntryFacts& facts)
{
    TWEntryFacts now;
    const int gone = now.read(here(), name.c_str());
    if (gone == ENOENT)
        return;
    if (gone != 0 || !now.isSameAs(facts))
        return keep(name, Replaced);
    const std::string disguise = renamed(name);
    if (unlinkat(here(), disguise.c_str(), facts.isFolder() ? AT_REMOVEDIR : 0) == 0) {
        levels_.back().removedSome = true;
        return;
    }
    const int error = errno;
    if (disguise != name)
        renameat2(here(), disguise.c_str(), here(), name.c_str(), RENAME_NOREPLACE);
    keep(name, error);
}

// Gives the entry a random name of the same length, so that it fits where the old one stood. Returns the name that it
// has now: the old one when the file system would not have it.
std::string TWTreeEraser::renamed(const std::string& name)
{
    constexpr std::string_view Letters = "abcdefghijklmnopqrstuvwxyz012345";
    for (int attempt = 0; attempt < 8; ++attempt) {
        std::string disguise(std::max<std::size_t>(name.size(), 8), ' ');
        for (char& letter : disguise)
            letter = Letters[random_.next() >> 59];
        if (renameat2(here(), name.c_str(), here(), disguise.c_str(), RENAME_NOREPLACE) == 0)
            return disguise;
        if (errno != EEXIST)
            break;
    }
    return name;
}

bool TWTreeEraser::removeName(const std::string& name)
{
    if (unlinkat(here(), name.c_str(), 0) == 0)
        return levels_.back().removedSome = true;
    if (errno != ENOENT)
        keep(name, errno);
    return false;
}

void TWTreeEraser::keep(const std::string& name, const char* reason)
{
    say(name, reason);
    levels_.back().keptSome = true;
    keptSome_ = true;
}

void TWTreeEraser::keep(const std::string& name, int error)
{
    keep(name, strerror(error));
}

void TWTreeEraser::say(const std::string& name, const char* text) const
{
    std::string path;
    for (const Level& level : levels_)
        path += level.name + "/";
    report(path + name, text);
}
