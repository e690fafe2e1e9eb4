#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Reads and writes Tidewell's own files: settings, lists, resources. Paths are absolute. Any thread, but one thread at
// a time per path.
class TWOwnFiles {
public:
    virtual ~TWOwnFiles() = default;

    struct Contents {
        int error = 0; // the errno; EFBIG if the file is longer than the limit
        std::string bytes;
    };

    // Reads a plain file. The error is ENOENT only if there is nothing at the path: a link that leads nowhere gives
    // ENOLINK.
    virtual Contents read(const std::string& path, std::size_t limit) const = 0;

    // Writes a temporary file in the same folder, flushes it and renames it over the old file, so a failed write leaves
    // the old file as it was. A link at the path stays a link. Returns 0 or the errno.
    virtual int writeAtomically(const std::string& path, std::string_view bytes) const = 0;

    // Creates the folder and those above it. Returns 0 or the errno.
    virtual int makeFolders(const std::string& path) const = 0;

    // Gives a file that could not be understood a second name, PATH.damaged (PATH.damaged.2 and so on if that is
    // taken), before a new one is written in its place. On success kept is the second name. Returns 0 or the errno.
    virtual int keepDamaged(const std::string& path, std::string& kept) const = 0;
};
