#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWMountTable.h"
#include "platform/TWPlaces.h"

#include <unordered_map>

// Why something may not be deleted: a clause for the user, "it is the home folder.", or nothing.
using TWObjection = const char*;

// Which paths may never be deleted, whatever a rule says. Folders are recognised by device and inode, so it does not
// matter which path, link or bind mount leads to them. A value: it does not change, and any thread may ask it.
class TWDeletionRules final {
public:
    // Looks at the protected folders and at every link on the way to them.
    TWDeletionRules(
        const TWPlaces&, const TWFileSystem&, const std::string& dataFolder, std::shared_ptr<const TWMountPoints>);

    // What the rules say about a parent folder.
    struct Folder {
        std::string realPath;
        TWObjection objection = nullptr; // holds for everything in the folder
        bool hasMounts = true; // volumes are mounted somewhere below
    };

    // Asks the disk once for each folder above.
    Folder judgeFolder(const TWHeldFolder&, std::string realPath) const;

    // What the rules say about an entry of such a folder, as the disk shows it now.
    TWObjection objection(const Folder&, std::string_view name, const TWFileLook&) const;

    // What the rules say about a path without a parent folder: "", "/", a relative path.
    static TWObjection objectionToPath(const std::string& path);

private:
    struct Protection {
        TWObjection itself = nullptr;
        TWObjection below = nullptr; // holds for everything below
        bool permitsBelow = false; // what lies below is not protected by a folder further up
    };

    void protectSystem(const TWFileSystem&);
    void protectUser(const TWPlaces&, const TWFileSystem&, const std::string& dataFolder);
    void protect(const TWFileSystem&, const std::string& path, const Protection&, TWObjection above);
    void protectSeen(const TWFileLook&, const std::string& path, const Protection&);
    bool hasMountsBelow(const std::string& realPath) const;
    TWObjection objectionToChain(const std::vector<TWAncestor>&) const;
    TWObjection objectionToMounts(const std::string& realPath) const;

    std::unordered_map<TWFileIdentity, Protection> protections_;
    std::unordered_map<std::string, Protection> unseen_; // protected paths that could not be looked at
    std::shared_ptr<const TWMountPoints> mountPoints_;
    bool sandboxed_;
    TWFileIdentity sandbox_; // of its root; no folder's if the root cannot be looked at
};
