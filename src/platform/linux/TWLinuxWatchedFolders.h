#pragma once

#include "platform/TWFolderWatch.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWWatchedPaths.h"
#include "platform/posix/TWDescriptor.h"

#include <map>
#include <mutex>
#include <set>
#include <string_view>
#include <unordered_set>

struct inotify_event;

// Watches folders with inotify and polls those that it gives no watch for, and the roots. Collects what has changed.
class TWLinuxWatchedFolders final : public TWWatchedFolders {
public:
    TWLinuxWatchedFolders();

    void setRoots(const std::vector<std::string>& paths) override;
    void add(const std::string& folder) override;
    void remove(const std::string& folder) override;

    // Looks at the roots and at a bounded number of the folders without a watch; the next ones follow in the next
    // call. Belongs into the background.
    void poll(const TWCancellation&);

    // The following never wait for the file system.

    // Can be read when there are events; -1 if the system gave none.
    int descriptor() const { return inotify_.get(); }

    // Takes in a bounded number of events.
    void readEvents();

    bool hasChanges() const;
    TWFolderChanges takeChanges();

    // See TWFolderWatch.
    std::string problem() const;

private:
    // A root as a poll sees it.
    struct Root {
        std::string path;
        std::string realPath; // "" if it does not exist
        TWFileIdentity entry; // of the root itself; it may be a symbolic link
        TWFileIdentity target; // of what it leads to
        bool isFolder = false;

        friend bool operator==(const Root&, const Root&) = default;
    };

    struct Polled {
        std::string realPath;
        TWFileIdentity identity;
        std::int64_t changed = 0; // in nanoseconds since 1970 UTC; 0 if it may have changed since it was looked at
    };

    // Guarded by files_.
    Root lookAtRoot(const std::string& path) const;
    std::string realPathOf(const std::string& folder);
    void addPolled(const std::string& folder, const std::string& realPath, const TWFileLook&, int error);
    void removeBelow(const std::string& path);
    void pollRoots(const TWCancellation&);
    void pollFolders(const TWCancellation&);
    static Polled polled(const std::string& realPath, const TWFileFacts&);

    // Guarded by changes_.
    void note(const inotify_event&, std::string_view name);
    void noteTree(const std::string& path);
    void loseTrack();

    const TWLinuxFileSystem fileSystem_{};
    const TWDescriptor inotify_;
    const int error_; // the errno if there is no descriptor

    // Held while the file system is read, however long that takes. The main thread never waits for it.
    std::mutex files_;
    std::vector<Root> roots_; // guarded by files_
    std::size_t latestRoot_ = 0; // guarded by files_; index of the root that was used last
    std::map<std::string, Polled> polled_; // guarded by files_; folders without a watch
    std::string polledUpTo_; // guarded by files_; where the next poll begins

    mutable std::mutex changes_;
    TWWatchedPaths watches_; // guarded by changes_
    std::set<std::string> rootPaths_; // guarded by changes_
    int watchError_ = 0; // guarded by changes_; the latest errno of a folder that got no watch although it can be read
    bool everything_ = false; // guarded by changes_
    std::unordered_set<int> changedWatches_; // guarded by changes_
    std::set<std::string> changedTrees_; // guarded by changes_
};
