#pragma once

#include "platform/TWRunLoop.h"

#include <string>
#include <vector>

// What has changed since the last report. Each path is there once, as it was passed to TWWatchedFolders, and sorted.
// The folder at a path may be gone by now.
struct TWFolderChanges {
    // Changes were lost, or a root appeared, vanished or was replaced: set the roots and scan them again. Both lists
    // are empty then.
    bool everything = false;

    // Entries of these folders were created, deleted, moved or renamed. Subfolders that are not in trees are the same
    // as before.
    std::vector<std::string> folders;

    // Anything below these folders may be different: they were created here or moved here, their permissions changed,
    // or they cannot be watched closely.
    std::vector<std::string> trees;

    friend bool operator==(const TWFolderChanges&, const TWFolderChanges&) = default;
};

// Which folders a TWFolderWatch watches. Any thread, but the calls read the file system and belong into the background.
// May be used, without effect, after the watch is gone.
class TWWatchedFolders {
public:
    virtual ~TWWatchedFolders() = default;

    // The tops of the trees: files or folders, which need not exist, none inside another. A root that is a symbolic
    // link stands for its target. Notices within seconds when one appears, vanishes or becomes another file, and stops
    // watching folders that are not at or below one of them.
    virtual void setRoots(const std::vector<std::string>& paths) = 0;

    // Watches this folder, which is at or below a root, but not the folders in it. Call it before listing the folder,
    // so that no change is missed. A folder that was moved is known at its new path once it is added there. What is
    // not a folder, is reached only through a symbolic link below the root, or has a path that is too long for the
    // system is not watched.
    virtual void add(const std::string& folder) = 0;

    // Stops watching this folder and everything that is still known below it.
    virtual void remove(const std::string& folder) = 0;
};

// Watches the entries of the folders of whole trees, not the contents of files. Destroying it, which is allowed in the
// call that reports changes, guarantees that no further call is made. Main thread.
class TWFolderWatch {
public:
    virtual ~TWFolderWatch() = default;

    // Background work may hold it as long as it wants.
    virtual std::shared_ptr<TWWatchedFolders> folders() const = 0;

    // One sentence if the system's limits leave folders without a watch, whose changes are then noticed some seconds
    // late; else "".
    virtual std::string problem() const = 0;
};

// Makes watches. Main thread.
class TWFolderWatcher {
public:
    virtual ~TWFolderWatcher() = default;

    // Calls the function about one second after the first change, with all changes up to then.
    using Changed = std::function<void(const TWFolderChanges&)>;
    [[nodiscard]] virtual std::unique_ptr<TWFolderWatch> watch(TWRunLoop&, Changed) const = 0;
};
