#pragma once

#include "deletion/TWKeepEntry.h"
#include "platform/TWFileSystem.h"
#include "platform/TWPlaces.h"
#include "platform/TWRunLoop.h"
#include "support/TWNamePatterns.h"

#include <map>
#include <unordered_map>
#include <unordered_set>

// What the keep list says about paths that are to be deleted. A kept path is known by its text, so that it stays kept
// if another file takes its place, and by device and inode, whatever path, link or bind mount leads to it. What lies in
// the Trash has been thrown away already and is never kept. Does not change; any thread may ask it. The file system
// must outlive it.
//
// An objection is a clause for the user that names the entry, or "".
class TWKeepRules final {
    struct Place;

public:
    // Looks at each kept path and at the folders and links on the way to it.
    TWKeepRules(const TWPlaces&, const TWFileSystem&, const TWKeepList&);
    TWKeepRules(const TWKeepRules&) = delete;
    TWKeepRules& operator=(const TWKeepRules&) = delete;

    // The real path of the Trash, or "" if nothing is exempt from the keep list: the Trash or its "files" is missing or
    // a symbolic link, which could lead to documents, or it holds the home folder.
    static std::string trash(const TWPlaces&, const TWFileSystem&);

    // What the keep list says about a parent folder. Must not outlive the rules.
    struct Folder {
        std::string objection; // holds for everything in the folder
        std::vector<const Place*> places; // the folder, if something in it or below it is kept; by each known path
        bool inTrash = false;
    };

    // True for an objection which says that something is kept, false for one for another reason.
    static bool isReason(std::string_view objection) { return objection.ends_with("on the keep list."); }

    // chain is that of the folder (see TWHeldFolder).
    Folder judgeFolder(const std::vector<TWAncestor>& chain, const std::string& realPath) const;

    // Whether an entry of such a folder is kept, lies in something kept or holds a kept path. Does not look below it.
    std::string objection(const Folder&, std::string_view name, const TWFileLook&) const;

    // What a search below a folder looks for: for a plan names that are kept, and right before a deletion also kept
    // files and folders that have left their places since these rules were made, perhaps for that folder.
    enum class Search : std::uint8_t { Names, NamesAndMoved };

    // Whether an entry without an objection may hold what is searched for, so that objectionInside() has to be asked.
    bool mustLookInside(const Folder&, const TWFileLook&, Search) const;

    // Searches the folder at the real path, which must still be the one that was looked at. Takes as long as reading
    // the whole tree, unless only what has moved matters and nothing has. Objects also if part of it cannot be read, or
    // when cancelled.
    std::string objectionInside(const std::string& realPath, const TWFileLook&, Search, const TWCancellation&) const;

private:
    // A path that is kept, or leads to one that is.
    struct Place {
        const std::string* path = nullptr; // its key in places_
        TWFileLook look;
        const TWKeepEntry* itself = nullptr; // keeps it
        const TWKeepEntry* below = nullptr; // keeps everything below it
        const TWKeepEntry* inside = nullptr; // is somewhere below it or, if it is a link, behind it
        std::map<std::string_view, const Place*> entries; // of those places that lie right in it, by name
    };

    using Identities = std::unordered_set<TWFileIdentity>;

    void keepPath(const TWKeepEntry&, const std::string& path);
    Place& place(const std::string& path);
    bool isInTrash(const std::vector<TWAncestor>& chain, const std::string& realPath) const;
    bool isTrash(const TWFileLook&) const;
    std::string objectionToChain(const std::vector<TWAncestor>& chain, const std::string& realPath) const;
    std::string objectionToNames(const std::string& realPath) const;
    std::string objectionToPlace(const Place&, const TWFileLook&) const;
    const TWKeepEntry* existsBelow(const Place&) const;
    Identities moved() const;
    class Searcher;

    const TWFileSystem& fileSystem_;
    const TWKeepList list_;
    TWNamePatterns patterns_;
    std::unordered_map<std::string, Place> places_; // by real path; the addresses of keys and places never change
    std::unordered_map<TWFileIdentity, std::vector<const Place*>> known_; // those of places_ that exist
    std::vector<const Place*> kept_; // those of places_ that exist and are kept themselves
    std::string trash_; // see trash()
    TWFileIdentity trashIdentity_;
};
