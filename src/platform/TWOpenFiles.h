#pragma once

#include "platform/TWFileSystem.h"

// A file without a name that takes space as long as programs have it open.
struct TWDeletedFile {
    std::string path; // where it was; in a container, as the container sees it
    TWFileIdentity identity;
    std::uint64_t bytes = 0; // space taken on disk
    std::vector<std::string> programs; // file names of this user's programs that have it open, sorted; never empty
};

// The files that are open.
class TWOpenFiles {
public:
    virtual ~TWOpenFiles() = default;

    // The deleted regular files that other programs of this user have open, sorted by path. A program that may not be
    // looked at does not count. Stops early when cancelled, and after 10,000 files. Belongs into the background. Any
    // thread.
    virtual std::vector<TWDeletedFile> deletedFiles(const TWCancellation&) const = 0;
};
