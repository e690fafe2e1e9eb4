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

    // Reads a regular file. The error is ENOENT only if there is nothing at the path; a dangling symbolic link anywhere
    // in the path gives ENOLINK.
    virtual Contents read(const std::string& path, std::size_t limit) const = 0;

    // Like read(), but without holding the file in memory: passes its bytes to take, piece by piece and in order, until
    // take returns false, which is not an error. Returns 0 or the errno; take may have been called before an error.
    virtual int readPieces(
        const std::string& path, std::size_t limit, const std::function<bool(std::string_view)>& take) const = 0;

    // Writes a temporary file in the same folder, flushes it and renames it over the old file, so a failed write leaves
    // the old file as it was. A symbolic link at the path is kept and its target replaced. The file keeps its mode and
    // owner; a new file gets mode 0600 and, if root creates it, the owner of its folder. Returns 0 or the errno: EBUSY
    // if another process or thread is writing the same file.
    virtual int writeAtomically(const std::string& path, std::string_view bytes) const = 0;

    // Creates the folder and its missing parents. If root creates them, they get the owner of the folder they are in.
    // Returns 0 or the errno.
    virtual int makeFolders(const std::string& path) const = 0;

    // True if another user could replace an entry of the folder or the folder itself, for example with a symbolic link:
    // the folder or one of its parents belongs to somebody other than this user and root, or everybody may write to it.
    // A parent with the sticky bit, such as /tmp, is safe, and so is what does not exist. Also true if that could not
    // be determined. Members of the folder's group are trusted. The path contains no symbolic links.
    virtual bool canOthersRedirect(const std::string& realPath) const = 0;

    // Removes temporary files that killed processes left in this folder. Those being written stay.
    virtual void removeLeftovers(const std::string& folder) const = 0;

    // Gives a file that could not be parsed a second name, PATH.damaged (or PATH.damaged.2 and so on if that is taken),
    // before a new file replaces it. If the path is a symbolic link, the second name is beside the link's target. On a
    // file system without hard links the file is copied, if it is no longer than the limit (in bytes). On success sets
    // kept to the second name. Returns 0 or the errno.
    virtual int keepDamaged(const std::string& path, std::size_t limit, std::string& kept) const = 0;
};
