#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWMountTable.h"
#include "platform/TWPlaces.h"

#include <string>

// Says no to deletions that nobody can have meant: it is asked once more for every single path, by the deleter itself.
// Main thread.
class TWDeletionGuard final {
public:
    TWDeletionGuard(const TWPlaces&, const TWFileSystem&, TWMountTable&, const std::string& dataFolder);

    // "" when the path may be deleted, else one sentence for the results list that says why not. The path has no
    // trailing slash. Judged by the real place of the path, links on the way to it resolved.
    std::string objection(const std::string& path) const;

    // The same as a clause, "it is the home folder."; nothing when the path may be deleted.
    const char* reason(const std::string& path) const;

private:
    const char* reasonAtRealPath(const std::string& path) const;

    const TWPlaces& places_;
    const TWFileSystem& fileSystem_;
    TWMountTable& mountTable_;
    // Real paths, found once: these folders may be reached through links.
    const std::string home_;
    const std::string dataFolder_;
    const std::string settingsFolder_; // of the settings file
};
