#pragma once

#include "platform/TWFileSystem.h"

#include <memory>
#include <string>

// A parent folder as a plan saw it. Deletion starts inside this folder or not at all.
struct TWPlannedFolder {
    std::string path; // as messages show it, in the words of the rule that led here
    std::string realPath; // with every link resolved
    TWFileIdentity identity;
};

// One path to delete.
struct TWDeletionTarget {
    std::shared_ptr<const TWPlannedFolder>
        folder; // nothing for a path without a parent folder, which is always refused
    std::string name; // the last component; without a folder the whole path

    std::string path() const { return folder ? join(folder->path, name) : name; }
    std::string realPath() const { return folder ? join(folder->realPath, name) : name; }

private:
    static std::string join(const std::string& folder, const std::string& name)
    {
        return folder == "/" ? folder + name : folder + "/" + name;
    }
};
