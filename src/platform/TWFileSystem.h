#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class TWCancellation;

enum class TWFileKind : std::uint8_t { File, Folder, Link, Other };

// Identifies a file or folder on this machine, whatever path leads to it.
struct TWFileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(const TWFileIdentity&, const TWFileIdentity&) = default;
};

template <>
struct std::hash<TWFileIdentity> {
    std::size_t operator()(const TWFileIdentity& identity) const noexcept
    {
        return std::hash<std::uint64_t>()(identity.inode * 0x9E3779B97F4A7C15U ^ identity.device);
    }
};

struct TWFileFacts {
    TWFileIdentity identity;
    std::uint64_t size = 0; // length of the contents, in bytes
    std::uint64_t bytes = 0; // space taken on disk, in bytes; for a folder without its contents
    std::int64_t changed = 0; // last change of contents or attributes, in nanoseconds since 1970 UTC
    std::int64_t modified = 0; // last change of contents, in nanoseconds since 1970 UTC
    std::uint32_t links = 0;
    TWFileKind kind = TWFileKind::Other;

    // True for two looks at the same file between which nobody has changed it.
    bool isUnchanged(const TWFileFacts& now) const
    {
        return identity == now.identity && kind == now.kind && changed == now.changed && size == now.size;
    }
};

// Unknown: the file system could not tell, so the file must not be treated as gone.
enum class TWPresence : std::uint8_t { Gone, There, Unknown };

// What the file system says about a path.
struct TWFileLook {
    TWPresence presence = TWPresence::Unknown;
    int error = 0; // the errno, unless the presence is There
    TWFileFacts facts; // only if the presence is There

    bool isThere() const { return presence == TWPresence::There; }
    bool isFolder() const { return isThere() && facts.kind == TWFileKind::Folder; }
};

struct TWFolderEntry {
    std::string_view name; // bytes, followed by a NUL; valid as long as the TWOpenFolder that listed it
    TWFileKind kind;
};

// A folder held open for reading and listed once. Its entries are opened relative to it and never through a symbolic
// link, so replacing a folder with a link cannot redirect the reader. A folder opened with openFolder() may be used
// only while the one that it was opened from exists, and only one thread at a time may use such a chain. A chain of any
// length takes a bounded number of descriptors.
class TWOpenFolder {
public:
    virtual ~TWOpenFolder() = default;

    virtual TWFileIdentity identity() const = 0;

    // In the order in which the system lists them, with hidden entries but without "." and "..".
    virtual const std::vector<TWFolderEntry>& entries() const = 0;

    // Looks at one of entries(); does not follow it if it is a symbolic link.
    virtual TWFileLook look(const TWFolderEntry&) const = 0;

    // Opens one of entries(). On failure returns nullptr and sets error to the errno: EXDEV if something is mounted
    // there, even another part of the same file system.
    virtual std::unique_ptr<TWOpenFolder> openFolder(const TWFolderEntry&, int& error) const = 0;

    // Another handle on this folder with the same entries, in the same order. It depends on no other folder, so another
    // thread may use it. On failure returns nullptr and sets error to the errno.
    virtual std::unique_ptr<TWOpenFolder> duplicate(int& error) const = 0;

    // True for a folder that the desktop shows as one file: its name has such a suffix, or it holds an executable
    // "AppRun".
    virtual bool isPackage() const = 0;
};

// A folder on the way from a folder up to "/".
struct TWAncestor {
    TWFileIdentity identity;
    bool isMountRoot = false; // a volume or a bind mount begins here

    friend bool operator==(const TWAncestor&, const TWAncestor&) = default;
};

// A folder held open, so that work can be done inside it even if its path later leads elsewhere. Any thread.
class TWHeldFolder {
public:
    virtual ~TWHeldFolder() = default;

    virtual TWFileIdentity identity() const = 0;

    // Looks at an entry; does not follow it if it is a symbolic link. The name is a single path component.
    virtual TWFileLook look(const std::string& name) const = 0;

    // The folder and all its parents up to "/", innermost first. Empty if they could not be determined.
    virtual std::vector<TWAncestor> chain() const = 0;

    // Owned by this object. Can become a child process's working directory.
    virtual int descriptor() const = 0;
};

// A regular file held open for reading, wherever its path leads by now. Any thread.
class TWOpenFile {
public:
    virtual ~TWOpenFile() = default;

    // As they are now: the file may grow, shrink or lose its name while it is open.
    virtual TWFileFacts facts() const = 0;

    // Reads that many bytes from that place on, fewer only if the file ends there. Returns 0 or the errno; the bytes
    // are those that could be read.
    virtual int read(std::uint64_t place, std::size_t length, std::string& bytes) const = 0;
};

enum class TWLinkAtEnd { Follow, DoNotFollow };

// Reads the file system and changes nothing. Paths are absolute; trailing slashes are ignored. Any thread. Differs on
// purpose: by default look() does not follow a symbolic link at the end of the path, so a dangling link exists.
class TWFileSystem {
public:
    virtual ~TWFileSystem() = default;

    virtual TWFileLook look(const std::string& path, TWLinkAtEnd = TWLinkAtEnd::DoNotFollow) const = 0;

    // The path with all symbolic links resolved, the last component only with Follow. On failure returns nothing and
    // sets error, if given, to the errno.
    virtual std::optional<std::string> realPath(
        const std::string& path, TWLinkAtEnd = TWLinkAtEnd::DoNotFollow, int* error = nullptr) const = 0;

    // What a symbolic link contains, as it is. Returns nothing if the path is not a symbolic link or cannot be read.
    virtual std::optional<std::string> linkTarget(const std::string& path) const = 0;

    // Opens and lists the folder. Fails if any component of realPath is a symbolic link. On failure returns nullptr and
    // sets error to the errno. The cancellation ends the listing of a very large folder early, with ECANCELED; it must
    // outlive the folder and all folders opened from it.
    virtual std::unique_ptr<TWOpenFolder> openFolder(
        const std::string& realPath, int& error, const TWCancellation* = nullptr) const = 0;

    // Opens a regular file. On failure returns nullptr and sets error to the errno: ELOOP for a symbolic link, EISDIR
    // for a folder, EINVAL for a pipe, a socket or a device, which opening could disturb.
    virtual std::unique_ptr<TWOpenFile> openFile(const std::string& path, int& error) const = 0;

    // Like openFolder(), but does not list the folder and needs no permission to.
    virtual std::unique_ptr<TWHeldFolder> holdFolder(const std::string& realPath, int& error) const = 0;
};

// The errno as an English phrase such as "Permission denied". Any thread.
std::string TWErrorText(int error);
