#pragma once

#include "deletion/TWKeepEntry.h"
#include "platform/TWFileSystem.h"
#include "platform/TWPlaces.h"
#include "platform/TWRunLoop.h"
#include "support/TWNamePattern.h"

#include <unordered_map>

// What the keep list says about paths that are to be deleted. A kept path is known by its text, so that it stays kept
// if another file takes its place, and by device and inode, whatever path, link or bind mount leads to it. What lies in
// the Trash has been thrown away already and is never kept. Does not change; any thread may ask it.
//
// An objection is a clause for the user that names the entry, or "".
class TWKeepRules final {
    struct Place;

public:
    // Looks at each kept path and at the folders and links on the way to it.
    TWKeepRules(const TWPlaces&, const TWFileSystem&, const TWKeepList&);
    TWKeepRules(const TWKeepRules&) = delete;
    TWKeepRules& operator=(const TWKeepRules&) = delete;

    // What the keep list says about a parent folder. Must not outlive the rules.
    struct Folder {
        std::string objection; // holds for everything in the folder
        std::vector<const Place*> places; // the folder, if something in it or below it is kept; by each known path
        bool inTrash = false;
    };

    // chain is that of the folder (see TWHeldFolder).
    Folder judgeFolder(const std::vector<TWAncestor>& chain, const std::string& realPath) const;

    // Whether an entry of such a folder is kept, lies in something kept or holds a kept path. Does not look below it.
    std::string objection(const Folder&, std::string_view name, const TWFileLook&) const;

    // Whether an entry without an objection may hold something whose name is kept, so that objectionInside() has to be
    // asked. Never if no names are kept.
    bool mustLookInside(const Folder&, const TWFileLook&) const;

    // Searches the folder at the real path, which must still be the one that was looked at, for names that are kept.
    // Takes as long as reading the whole tree. Objects also if part of it cannot be read, or when cancelled.
    std::string objectionInside(
        const TWFileSystem&, const std::string& realPath, const TWFileLook&, const TWCancellation&) const;

private:
    // A path that is kept, or leads to one that is.
    struct Place {
        TWFileLook look;
        const TWKeepEntry* itself = nullptr; // keeps it
        const TWKeepEntry* below = nullptr; // keeps everything below it
        const TWKeepEntry* inside = nullptr; // is somewhere below it or, if it is a link, behind it
        std::unordered_map<std::string_view, const Place*> entries; // of those places that lie right in it, by name
    };

    void keepPath(const TWFileSystem&, const TWKeepEntry&, const std::string& path);
    Place& place(const TWFileSystem&, const std::string& path);
    bool isInTrash(const std::vector<TWAncestor>& chain, const std::string& realPath) const;
    bool isTrash(const TWFileLook&) const;
    std::string objectionToChain(const std::vector<TWAncestor>& chain, const std::string& realPath) const;
    std::string objectionToNames(const std::string& realPath) const;
    static std::string objectionToPlace(const Place&, const TWFileLook&);
    const TWNamePattern* patternFor(std::string_view name) const;
    class Search;

    const TWKeepList list_;
    std::vector<TWNamePattern> patterns_;
    std::unordered_map<std::string, Place> places_; // by real path; the addresses of keys and places never change
    std::unordered_map<TWFileIdentity, std::vector<const Place*>> known_; // those of places_ that exist
    std::string trash_; // its real path; "" if it does not exist or holds the home folder
    TWFileIdentity trashIdentity_;
};
