#pragma once

#include "platform/TWFileSystem.h"
#include "platform/posix/TWDescriptor.h"

#include <sys/types.h>

// A chain of these keeps at most about OpenLevels descriptors: outer folders give theirs up while the walk is deep
// below them, and get them back, when asked again, only if the folder found there is the same one.
class TWPosixOpenFolder final : public TWOpenFolder {
public:
    static constexpr unsigned OpenLevels = 64;

    // Takes over a descriptor of the folder and lists it. name is the folder's own; it is kept as a view when there is
    // a parent, in whose listing it stands. Nothing when the folder cannot be read; errno tells why.
    static std::unique_ptr<TWPosixOpenFolder> list(
        TWDescriptor, std::string_view name, const TWPosixOpenFolder* parent = nullptr);

    const std::vector<TWFolderEntry>& entries() const override { return entries_; }
    std::unique_ptr<TWOpenFolder> openFolder(const TWFolderEntry&) const override;
    bool isPackage() const override;

    // As openFolder().
    std::unique_ptr<TWPosixOpenFolder> openPosixFolder(const TWFolderEntry&) const;

    // -1 when the descriptor was given up and the folder is not found any more.
    int descriptor() const;

private:
    TWPosixOpenFolder(TWDescriptor, std::string_view name, const TWPosixOpenFolder* parent);

    bool readListing();
    void makeEntries(std::size_t count);
    TWFileKind kindOf(unsigned char type, const char* name) const;
    void giveUpDescriptor() const;
    void giveUpOuterDescriptor() const;
    bool reopenBelowParent() const;

    const TWPosixOpenFolder* parent_;
    std::string_view name_; // valid only with a parent
    unsigned depth_;
    bool namedAsPackage_;
    bool listsAppRun_ = false;
    mutable TWDescriptor descriptor_;
    mutable dev_t device_ = 0; // these two are known only once the descriptor was given up
    mutable ino_t inode_ = 0;
    std::vector<char> listing_; // the records as the system delivered them; the names of entries_ point into it
    std::vector<TWFolderEntry> entries_;
};
