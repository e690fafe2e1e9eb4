#pragma once

#include "platform/TWFileSystem.h"

#include <memory>
#include <string>
#include <string_view>

// A parent folder as a plan saw it. Deletion starts inside this folder or not at all.
struct TWPlannedFolder {
    std::string path; // as messages show it, in the words of the rule that led here
    std::string realPath; // with every link resolved; "" stands for no folder at all
    TWFileIdentity identity;
};

// One path to delete. Small, because lists of them are long.
struct TWDeletionTarget {
    std::shared_ptr<const TWPlannedFolder> folder; // also keeps alive whatever the name is a view of
    std::string_view name; // the last component; the whole path if it has no folder

    // A target with a name of its own.
    static TWDeletionTarget make(TWPlannedFolder, std::string name);

    // False for a path without a parent folder, which is always refused.
    bool hasFolder() const { return !folder->realPath.empty(); }

    std::string path() const { return join(folder->path); }
    std::string realPath() const { return join(folder->realPath); }

private:
    std::string join(const std::string& folderPath) const;
};
