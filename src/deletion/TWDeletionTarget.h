#pragma once

#include "platform/TWFileSystem.h"

#include <memory>
#include <string>
#include <string_view>

// A parent folder as the plan saw it. Deletion starts inside this very folder or not at all.
struct TWPlannedFolder {
    std::string path; // for messages: as the rule that led here writes it
    std::string realPath; // with all symbolic links resolved; "" if there is no parent folder
    TWFileIdentity identity;
};

// One path to delete. Kept small, because lists of them are long.
struct TWDeletionTarget {
    std::shared_ptr<const TWPlannedFolder> folder; // also keeps the characters alive that name refers to
    std::string_view name; // the last component, or the whole path if there is no parent folder
    const TWFileFacts* seen = nullptr; // what the plan saw there, kept alive by folder; nullptr if it saw nothing

    // Makes a target that owns its folder and name.
    static TWDeletionTarget make(TWPlannedFolder, std::string name);

    // False for a path without a parent folder, which is always refused.
    bool hasFolder() const { return !folder->realPath.empty(); }

    std::string path() const { return join(folder->path); }
    std::string realPath() const { return join(folder->realPath); }

private:
    std::string join(const std::string& folderPath) const;
};
