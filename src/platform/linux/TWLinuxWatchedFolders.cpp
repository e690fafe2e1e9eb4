#include "platform/linux/TWLinuxWatchedFolders.h"

#include "platform/linux/TWLinuxFacts.h"
#include "platform/linux/TWLinuxOpen.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <fcntl.h>
#include <sys/inotify.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace {

constexpr auto NoWatches = "The system does not let Tidewell watch folders (%@), so changes in them are noticed some "
                           "seconds late.";
constexpr auto TooManyFolders = "The system's limit on watched folders (fs.inotify.max_user_watches) is reached, so "
                                "changes in some of them are noticed some seconds late.";

// Not IN_MODIFY: programs append to their logs all the time. IN_ATTRIB tells of folders whose permissions change.
constexpr std::uint32_t Mask
    = IN_CREATE | IN_DELETE | IN_MOVE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ATTRIB | IN_ONLYDIR | IN_EXCL_UNLINK;
constexpr std::size_t EventsPerTurn = 20'000;
constexpr std::size_t FoldersPerPoll = 10'000;
constexpr std::size_t MostTrees = 10'000; // so that the memory is bounded
constexpr std::int64_t CoarsestClock = 3'000'000'000; // of a file system, in nanoseconds

std::int64_t now()
{
    return std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
}

std::string linkTo(const TWDescriptor& descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor.get());
}

// Gone, replaced by something that is not watched, or inside a folder that may not be entered: the folder above tells
// of any change of this.
bool isNotThere(int error)
{
    return error == ENOENT || error == ENOTDIR || error == ELOOP || error == EACCES;
}

}

TWLinuxWatchedFolders::TWLinuxWatchedFolders()
    : inotify_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    , error_(inotify_.isOpen() ? 0 : errno)
{
}

void TWLinuxWatchedFolders::setRoots(const std::vector<std::string>& paths)
{
    const std::lock_guard files(files_);
    for (const auto& root : roots_) {
        if (std::find(paths.begin(), paths.end(), root.path) == paths.end())
            removeBelow(root.path);
    }
    roots_.clear();
    for (const auto& path : paths)
        roots_.push_back(lookAtRoot(path));
    const std::lock_guard changes(changes_);
    rootPaths_ = { paths.begin(), paths.end() };
    watchError_ = 0;
}

TWLinuxWatchedFolders::Root TWLinuxWatchedFolders::lookAtRoot(const std::string& path) const
{
    const auto target = fileSystem_.look(path, TWLinkAtEnd::Follow);
    return { path, fileSystem_.realPath(path, TWLinkAtEnd::Follow).value_or(""), fileSystem_.look(path).facts.identity,
        target.facts.identity, target.isFolder() };
}

// Links are followed up to the root, but not below it. "" if the root does not exist.
std::string TWLinuxWatchedFolders::realPathOf(const std::string& folder)
{
    const auto isIn = [&](const Root& root) { return TWPath::isAtOrBelow(folder, root.path); };
    if (latestRoot_ >= roots_.size() || !isIn(roots_[latestRoot_]))
        latestRoot_ = static_cast<std::size_t>(std::find_if(roots_.begin(), roots_.end(), isIn) - roots_.begin());
    if (latestRoot_ == roots_.size() || roots_[latestRoot_].realPath.empty())
        return "";
    return roots_[latestRoot_].realPath + folder.substr(roots_[latestRoot_].path.size());
}

void TWLinuxWatchedFolders::add(const std::string& folder)
{
    std::unique_lock files(files_);
    const auto realPath = realPathOf(folder);
    files.unlock(); // all threads of a walk add folders
    if (realPath.empty() || realPath.size() >= PATH_MAX)
        return;
    const auto opened = TWLinuxOpenWithoutLinks(AT_FDCWD, realPath.c_str(), O_PATH);
    if (!opened.isOpen() && isNotThere(errno))
        return;
    const int watch = opened.isOpen() ? inotify_add_watch(inotify_.get(), linkTo(opened).c_str(), Mask) : -1;
    const int error = errno;
    files.lock();
    if (watch < 0) {
        addPolled(folder, realPath, opened.isOpen() ? TWLookAt(opened.get(), "") : fileSystem_.look(realPath), error);
        return;
    }
    polled_.erase(folder);
    const std::lock_guard changes(changes_);
    if (const int before = watches_.assign(folder, watch); before != TWWatchedPaths::None)
        inotify_rm_watch(inotify_.get(), before);
}

void TWLinuxWatchedFolders::addPolled(
    const std::string& folder, const std::string& realPath, const TWFileLook& look, int error)
{
    removeBelow(folder);
    if (!look.isFolder())
        return;
    polled_[folder] = polled(realPath, look.facts);
    const std::lock_guard changes(changes_);
    if (error != EACCES) // it cannot be read
        watchError_ = error;
}

void TWLinuxWatchedFolders::remove(const std::string& folder)
{
    const std::lock_guard files(files_);
    removeBelow(folder);
}

void TWLinuxWatchedFolders::removeBelow(const std::string& path)
{
    polled_.erase(path);
    polled_.erase(polled_.lower_bound(path + '/'), polled_.lower_bound(path + char('/' + 1)));
    const std::lock_guard changes(changes_);
    for (const int watch : watches_.takeBelow(path))
        inotify_rm_watch(inotify_.get(), watch);
}

// Within the resolution of the file system's clock, a change after this look would not change the time.
TWLinuxWatchedFolders::Polled TWLinuxWatchedFolders::polled(const std::string& realPath, const TWFileFacts& facts)
{
    const auto age = now() - facts.changed;
    const bool isFresh = age > -CoarsestClock && age < CoarsestClock;
    return { realPath, facts.identity, isFresh ? 0 : facts.changed };
}

void TWLinuxWatchedFolders::poll(const TWCancellation& cancellation)
{
    const std::lock_guard files(files_);
    pollRoots(cancellation);
    pollFolders(cancellation);
}

void TWLinuxWatchedFolders::pollRoots(const TWCancellation& cancellation)
{
    for (auto& root : roots_) {
        if (cancellation.cancelled())
            return;
        auto found = lookAtRoot(root.path);
        if (found == root)
            continue;
        root = std::move(found);
        const std::lock_guard changes(changes_);
        loseTrack();
    }
}

void TWLinuxWatchedFolders::pollFolders(const TWCancellation& cancellation)
{
    auto at = polled_.lower_bound(polledUpTo_);
    for (std::size_t count = 0; at != polled_.end() && count < FoldersPerPoll; ++count) {
        if (cancellation.cancelled())
            return;
        auto& [path, before] = *at;
        const auto look = fileSystem_.look(before.realPath);
        const bool isSame
            = look.isFolder() && look.facts.identity == before.identity && look.facts.changed == before.changed;
        if (!isSame) {
            before = polled(before.realPath, look.facts);
            const std::lock_guard changes(changes_);
            noteTree(path);
        }
        at = look.isFolder() ? std::next(at) : polled_.erase(at);
    }
    polledUpTo_ = at == polled_.end() ? "" : at->first;
}

void TWLinuxWatchedFolders::readEvents()
{
    alignas(inotify_event) char buffer[32 * 1024];
    const std::lock_guard changes(changes_);
    for (std::size_t count = 0; count < EventsPerTurn;) {
        const auto length = read(inotify_.get(), buffer, sizeof buffer);
        for (const char* at = buffer; at < buffer + length; ++count) {
            const auto& event = *reinterpret_cast<const inotify_event*>(at);
            note(event, event.len > 0 ? event.name : "");
            at += sizeof event + event.len;
        }
        if (length <= 0)
            return;
    }
}

// Events of watches without a path are too late: their folder was added at another path or is gone.
void TWLinuxWatchedFolders::note(const inotify_event& event, std::string_view name)
{
    if (event.mask & IN_Q_OVERFLOW)
        loseTrack();
    const auto* path = watches_.pathOf(event.wd);
    if (!path)
        return;
    const bool concernsFolder = event.mask & IN_ISDIR;
    if (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED)) {
        if (rootPaths_.contains(*path))
            loseTrack();
        if (event.mask & IN_IGNORED)
            watches_.forget(event.wd);
    } else if (event.mask & IN_ATTRIB) {
        if (concernsFolder && name.empty())
            noteTree(*path);
    } else {
        changedWatches_.insert(event.wd);
        if (concernsFolder && event.mask & (IN_CREATE | IN_MOVED_TO))
            noteTree(TWPath::join(*path, name));
    }
}

void TWLinuxWatchedFolders::noteTree(const std::string& path)
{
    if (changedTrees_.size() >= MostTrees)
        loseTrack();
    else if (!everything_)
        changedTrees_.insert(path);
}

void TWLinuxWatchedFolders::loseTrack()
{
    everything_ = true;
    changedWatches_.clear();
    changedTrees_.clear();
}

bool TWLinuxWatchedFolders::hasChanges() const
{
    const std::lock_guard changes(changes_);
    return everything_ || !changedWatches_.empty() || !changedTrees_.empty();
}

TWFolderChanges TWLinuxWatchedFolders::takeChanges()
{
    const std::lock_guard changes(changes_);
    TWFolderChanges taken;
    taken.everything = std::exchange(everything_, false);
    if (!taken.everything) {
        taken.trees = { changedTrees_.begin(), changedTrees_.end() };
        for (const int watch : changedWatches_) {
            const auto* path = watches_.pathOf(watch);
            if (path && !changedTrees_.contains(*path))
                taken.folders.push_back(*path);
        }
        std::sort(taken.folders.begin(), taken.folders.end());
    }
    changedWatches_.clear();
    changedTrees_.clear();
    return taken;
}

std::string TWLinuxWatchedFolders::problem() const
{
    const std::lock_guard changes(changes_);
    const int error = inotify_.isOpen() ? watchError_ : error_;
    if (error == ENOSPC)
        return TooManyFolders;
    return error == 0 ? "" : TWText::fill(NoWatches, { TWErrorText(error) });
}
