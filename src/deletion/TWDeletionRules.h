#pragma once

#include "deletion/TWKeepRules.h"
#include "platform/TWMountTable.h"

#include <atomic>
#include <mutex>

// Why something may not be deleted: a clause for the user, "it is the home folder.", or "" if it may.
using TWObjection = std::string;

// Which paths may never be deleted, whatever a rule says. Folders are recognised by device and inode, so it does not
// matter which path, link or bind mount leads to them. A value: it does not change, and any thread may ask it.
// The file system must outlive it.
class TWDeletionRules final {
public:
    using Reason = const char*; // a fixed objection, or nullptr

    // Looks at the protected folders and at every link on the way to them.
    TWDeletionRules(const TWPlaces&, const TWFileSystem&, const std::string& dataFolder,
        std::shared_ptr<const TWMountPoints>, const TWKeepList&);

    // What the rules say about a parent folder.
    struct Folder {
        std::string realPath;
        Reason objection = nullptr; // holds for everything in the folder
        bool hasMounts = true; // volumes are mounted somewhere below
        TWKeepRules::Folder kept;
    };

    // Looks at the kept paths and at every link on the way to them, unless that has been done. The first judgeFolder()
    // does it otherwise. Takes as long as the slowest of their disks, so it should not be done on the main thread.
    void prepare() const { keepRules(); }
    bool isPrepared() const { return !keepList_ || keepList_->empty() || isPrepared_; }

    // Asks the disk once for each folder above.
    Folder judgeFolder(const TWHeldFolder&, std::string realPath) const;

    // What the rules say about an entry of such a folder, as the disk shows it now.
    TWObjection objection(const Folder&, std::string_view name, const TWFileLook&) const;

    // Whether the rules can tell about an entry without an objection only when they look below it.
    using Search = TWKeepRules::Search;
    bool mustLookInside(const Folder&, const TWFileLook&, Search) const;

    // What the rules say about such an entry. May take as long as reading the whole tree. Objects also if part of it
    // cannot be read, or when cancelled.
    TWObjection objectionInside(
        const Folder&, std::string_view name, const TWFileLook&, Search, const TWCancellation&) const;

    // What the rules say about a path without a parent folder: "", "/", a relative path.
    static TWObjection objectionToPath(const std::string& path);

private:
    struct Protection {
        Reason itself = nullptr;
        Reason below = nullptr; // holds for everything below
        bool permitsBelow = false; // what lies below is not protected by a folder further up
    };

    void protectSystem(const TWFileSystem&);
    void protectUser(const TWPlaces&, const TWFileSystem&, const std::string& dataFolder);
    void protect(const TWFileSystem&, const std::string& path, const Protection&, Reason above);
    void protectSeen(const TWFileLook&, const std::string& path, const Protection&);
    bool hasMountsBelow(const std::string& realPath) const;
    Reason fixedObjection(const Folder&, std::string_view name, const TWFileLook&) const;
    Reason objectionToChain(const std::vector<TWAncestor>&) const;
    Reason objectionToMounts(const std::string& realPath) const;

    const TWKeepRules& keepRules() const;

    const TWFileSystem& fileSystem_;
    const TWPlaces places_;
    const TWKeepList keepList_;
    mutable std::once_flag prepared_;
    mutable std::unique_ptr<const TWKeepRules> keepRules_; // made on first use
    mutable std::atomic<bool> isPrepared_{ false };
    std::unordered_map<TWFileIdentity, Protection> protections_;
    std::unordered_map<std::string, Protection> unseen_; // protected paths that could not be looked at
    std::shared_ptr<const TWMountPoints> mountPoints_;
    bool sandboxed_;
    TWFileIdentity sandbox_; // of its root; no folder's if the root cannot be looked at
};
