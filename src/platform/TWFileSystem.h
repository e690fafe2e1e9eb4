#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

enum class TWFileKind : std::uint8_t { File, Folder, Link, Other };

struct TWFolderEntry {
    std::string_view name; // bytes; lives as long as its TWOpenFolder
    TWFileKind kind;
};

// A folder held open, listed once. What is found in it is opened relative to it and never through a link, so that
// nobody can lead the reader elsewhere by swapping a folder for a link meanwhile. It must outlive the folders opened
// from it, and one thread at a time uses it and them. Trees of any depth can be walked with a bounded number of
// descriptors.
class TWOpenFolder {
public:
    virtual ~TWOpenFolder() = default;

    // In the order of the system's listing, hidden entries included, "." and ".." not.
    virtual const std::vector<TWFolderEntry>& entries() const = 0;

    // Nothing when it is no folder any more or cannot be read. The entry must be one of entries().
    virtual std::unique_ptr<TWOpenFolder> openFolder(const TWFolderEntry&) const = 0;

    // A folder that the desktop shows as one file: by the ending of its name, or an executable "AppRun" in it.
    virtual bool isPackage() const = 0;
};

struct TWFileFacts {
    TWFileKind kind = TWFileKind::Other;
    std::uint64_t bytes = 0; // space taken on disk, in bytes; for a folder its own only
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t links = 0;
};

struct TWTreeSize {
    std::uint64_t items = 0; // everything inside and the path itself
    std::uint64_t bytes = 0; // space taken on disk, a file with several names counted once
};

class TWCancellation;

enum class TWLinkAtEnd { Follow, DoNotFollow };

// Questions to the file system and the few writes that Tidewell makes for itself. It deletes nothing. Any thread.
// Differs on purpose: existence is asked without following a link at the end, so a dangling link exists.
class TWFileSystem {
public:
    virtual ~TWFileSystem() = default;

    // Trailing slashes are cut first. Nothing when there is nothing at the path.
    virtual std::optional<TWFileFacts> facts(const std::string& path, TWLinkAtEnd = TWLinkAtEnd::DoNotFollow) const = 0;

    // False only when it is certain that there is nothing at the path; a folder on the way that may not be searched
    // leaves it open.
    virtual bool exists(const std::string& path) const = 0;
    bool isFolder(const std::string& path, TWLinkAtEnd link = TWLinkAtEnd::DoNotFollow) const
    {
        const auto found = facts(path, link);
        return found && found->kind == TWFileKind::Folder;
    }

    // The folder's own path may be a link only with Follow; a link inside is never followed. On failure nothing, and
    // error (when given) holds the errno.
    virtual std::unique_ptr<TWOpenFolder> openFolder(
        const std::string& path, TWLinkAtEnd, int* error = nullptr) const = 0;

    // Counts a tree without following links or entering other file systems. Stops early, with what was counted so far,
    // when cancelled.
    virtual TWTreeSize treeSize(const std::string& path, const TWCancellation&) const = 0;

    // The path with every link on the way resolved, the last component not followed; nothing when its folder does not
    // exist.
    virtual std::optional<std::string> realPath(const std::string& path) const = 0;

    // Makes the folder and those above it. 0, or the errno.
    virtual int makeFolders(const std::string& path) const = 0;

    struct Contents {
        int error = 0; // errno; EFBIG when the file is longer than the limit
        std::string bytes;
    };
    virtual Contents read(const std::string& path, std::size_t limit) const = 0;

    // To a temporary file beside it, flushed, then renamed over the old one: a failed write leaves the old file. 0, or
    // the errno.
    virtual int writeAtomically(const std::string& path, std::string_view bytes) const = 0;

    // For keeping a damaged file under another name. Never over an existing file: EEXIST. 0, or the errno.
    virtual int copyFile(const std::string& from, const std::string& to) const = 0;
};

// "Permission denied" and the like, for a line that names the file and the remedy.
std::string TWErrorText(int error);
