#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

// Reads and writes Tidewell's own files: settings, lists, resources. Paths are absolute. Any thread.
class TWOwnFiles {
public:
    virtual ~TWOwnFiles() = default;

    struct Contents {
        int error = 0; // the errno; EFBIG if the file is longer than the limit
        std::string bytes;
    };

    // Reads a plain file. The error is ENOENT only if there is nothing at the path: a link that leads nowhere, at the
    // path or on the way to it, gives ENOLINK.
    virtual Contents read(const std::string& path, std::size_t limit) const = 0;

    // The same for a file that need not be held in memory: gives its bytes to take, piece by piece and in order, until
    // take returns false, which is no error. Returns 0 or the errno; some pieces may have been given before an error.
    virtual int readPieces(
        const std::string& path, std::size_t limit, const std::function<bool(std::string_view)>& take) const = 0;

    // Writes a temporary file in the same folder, flushes it and renames it over the old file, so a failed write leaves
    // the old file as it was. A link at the path stays a link. The file keeps its mode and owner; a new one gets mode
    // 0600 and, if root makes it, the owner of its folder. Returns 0 or the errno: EBUSY if the same file is being
    // written by somebody else.
    virtual int writeAtomically(const std::string& path, std::string_view bytes) const = 0;

    // Creates the folder and those above it, with the owner of the folder they are in. Returns 0 or the errno.
    virtual int makeFolders(const std::string& path) const = 0;

    // Removes the temporary files of writes into this folder that were killed; those being written stay.
    virtual void removeLeftovers(const std::string& folder) const = 0;

    // Gives a file that could not be understood a second name, PATH.damaged (PATH.damaged.2 and so on if that is
    // taken), before a new one is written in its place. If the path is a link, the second name is beside the link's
    // target. Where the file system has no hard links the file is copied, if it is no longer than the limit. On success
    // kept is the second name. Returns 0 or the errno.
    virtual int keepDamaged(const std::string& path, std::size_t limit, std::string& kept) const = 0;
};
