#pragma once

#include "cleaners/TWPlan.h"

// Turns paths into items of a plan: finds the real parent folder of a path, looks at the path there and asks the
// deletion rules. Any thread.
class TWPathPlanner final {
public:
    TWPathPlanner(const TWFileSystem& fileSystem, std::shared_ptr<const TWDeletionRules> rules)
        : fileSystem_(fileSystem)
        , rules_(std::move(rules))
    {
    }

    // A parent folder of items.
    struct Folder {
        std::shared_ptr<const TWPlannedFolder> planned;
        TWDeletionRules::Folder judged;
        std::shared_ptr<const TWHeldFolder> held;
    };

    // Opens a parent folder; path is what messages show. On failure returns nothing and sets error to the errno.
    std::optional<Folder> folder(const std::string& path, const std::string& realPath, int& error) const;

    // The same for a path that may contain symbolic links; all of them are followed.
    std::optional<Folder> folderThroughLinks(const std::string& path, int& error) const;

    // What a path that a rule names leads to.
    struct Sought {
        bool isPath = true; // false if it is not absolute or has no last component; then nothing was looked at
        std::string name; // the last component
        std::optional<Folder> folder; // the one it is in; nothing if that could not be opened
        TWFileLook look; // if there is no folder, Gone or Unknown with the errno of opening it
        bool isBehindDanglingLink = false; // so that nobody can tell whether there is something; look is Unknown
    };

    // Follows all links before the last component.
    Sought seek(const std::string& path) const;

    // True for the errno of a path that does not exist.
    static bool isMissing(int error);

    // Lists the folder. On failure returns nothing and sets error to the errno: ESTALE if it is another folder by now.
    // The cancellation must outlive the result.
    std::unique_ptr<TWOpenFolder> list(const Folder&, int& error, const TWCancellation&) const;

    // Looks at all entries of a list of the folder, on all cores, and calls seen for each of them, on this thread and
    // in the order of the list. When cancelled, stops early and returns false.
    using Seen = std::function<void(std::string_view name, const TWFileLook&)>;
    bool lookAtEntries(const Folder&, const TWOpenFolder& list, const TWCancellation&, const Seen& seen) const;

    // Appends an entry of the folder to the plan, with the deletion rules' objection if there is one. If the rules have
    // to know what lies below the entry, reads the whole tree; when cancelled, it stops early and the item is refused.
    TWPlannedItem& add(TWPlan&, const Folder&, std::string_view name, const TWFileLook&, const TWCancellation&) const;

    // Appends a path that is none, with the deletion rules' objection.
    static TWPlannedItem& addNoPath(TWPlan&, const std::string& path);

    const TWFileSystem& fileSystem() const { return fileSystem_; }

private:
    const TWFileSystem& fileSystem_;
    std::shared_ptr<const TWDeletionRules> rules_;
};
