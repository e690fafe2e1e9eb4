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

// Tells one file or folder from every other one on the machine, whatever path leads to it.
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
    std::uint64_t bytes = 0; // space taken on disk, in bytes; for a folder its own only
    std::int64_t changed = 0; // last change of contents or attributes, in nanoseconds since 1970 UTC
    std::int64_t modified = 0; // last change of contents, in nanoseconds since 1970 UTC
    std::uint32_t links = 0;
    TWFileKind kind = TWFileKind::Other;
};

// Unknown: the disk could not be asked, so nobody may say that the file is gone.
enum class TWPresence : std::uint8_t { Gone, There, Unknown };

// The disk's answer to "what is at this path?".
struct TWFileLook {
    TWPresence presence = TWPresence::Unknown;
    int error = 0; // the errno, when the presence is not There
    TWFileFacts facts; // when the presence is There

    bool isThere() const { return presence == TWPresence::There; }
    bool isFolder() const { return isThere() && facts.kind == TWFileKind::Folder; }
};

struct TWFolderEntry {
    std::string_view name; // bytes, followed by a NUL; valid as long as the TWOpenFolder it comes from
    TWFileKind kind;
};

// A folder held open for reading and listed once. Its entries are opened relative to it and never through a link, so
// nobody can redirect the reader by replacing a folder with a link. A folder opened from another one with openFolder()
// can be used only as long as that one exists, and one thread at a time uses such a chain. A chain of any length takes
// a bounded number of descriptors.
class TWOpenFolder {
public:
    virtual ~TWOpenFolder() = default;

    virtual TWFileIdentity identity() const = 0;

    // In the order in which the system lists them, hidden entries included, "." and ".." not.
    virtual const std::vector<TWFolderEntry>& entries() const = 0;

    // Asks the disk about one of entries() without following it if it is a link.
    virtual TWFileLook look(const TWFolderEntry&) const = 0;

    // Opens one of entries(). On failure returns nothing and sets error to the errno: EXDEV if another file system, or
    // another part of this one, is mounted there.
    virtual std::unique_ptr<TWOpenFolder> openFolder(const TWFolderEntry&, int& error) const = 0;

    // Another handle on this folder with the same entries, in the same order. It depends on no other folder, so it may
    // be used on another thread. On failure returns nothing and sets error to the errno.
    virtual std::unique_ptr<TWOpenFolder> duplicate(int& error) const = 0;

    // True for a folder that the desktop shows as one file: by the ending of its name, or by an executable "AppRun" in
    // it.
    virtual bool isPackage() const = 0;
};

// A folder held open so that work can be done inside it, whatever its path means by then. Any thread.
class TWHeldFolder {
public:
    virtual ~TWHeldFolder() = default;

    virtual TWFileIdentity identity() const = 0;

    // Asks the disk about an entry without following it if it is a link. The name is a single path component.
    virtual TWFileLook look(const std::string& name) const = 0;

    // The identities of the folder itself and of every folder above it up to "/", innermost first. Empty if they could
    // not be determined.
    virtual std::vector<TWFileIdentity> chain() const = 0;

    // Not the caller's to close. It can be made a child's working folder.
    virtual int descriptor() const = 0;
};

enum class TWLinkAtEnd { Follow, DoNotFollow };

// Looks at the disk and changes nothing. Paths are absolute; trailing slashes are ignored. Any thread.
// Differs on purpose: existence is asked without following a link at the end, so a dangling link exists.
class TWFileSystem {
public:
    virtual ~TWFileSystem() = default;

    virtual TWFileLook look(const std::string& path, TWLinkAtEnd = TWLinkAtEnd::DoNotFollow) const = 0;

    // The path with every link on the way resolved; the last component is resolved only with Follow. On failure returns
    // nothing and sets error, if given, to the errno.
    virtual std::optional<std::string> realPath(
        const std::string& path, TWLinkAtEnd = TWLinkAtEnd::DoNotFollow, int* error = nullptr) const = 0;

    // Opens and lists the folder. realPath must have no links in it: a link anywhere on the way makes the call fail. On
    // failure returns nothing and sets error to the errno. The cancellation, which must outlive the folder and all that
    // is opened from it, ends the listing of a very large folder early, with ECANCELED.
    virtual std::unique_ptr<TWOpenFolder> openFolder(
        const std::string& realPath, int& error, const TWCancellation* = nullptr) const = 0;

    // As openFolder(), but needs no permission to list the folder.
    virtual std::unique_ptr<TWHeldFolder> holdFolder(const std::string& realPath, int& error) const = 0;
};

// The errno as an English phrase, "Permission denied", for messages that name the file and the remedy.
std::string TWErrorText(int error);
