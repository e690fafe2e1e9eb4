#pragma once

#include "platform/TWFileSystem.h"
#include "platform/posix/TWDescriptor.h"

#include <optional>

// A chain of these keeps at most about OpenLevels descriptors: outer folders give theirs up while the walk is deep
// below them and get them back when they are used again, but only if the folder found there is still the same one.
class TWLinuxOpenFolder final : public TWOpenFolder {
public:
    static constexpr unsigned OpenLevels = 64;

    // Takes over a descriptor of the folder and lists it. name is the folder's own; with a parent it is kept as a view
    // into the parent's listing. If the folder cannot be read, or the descriptor is closed, returns nothing and sets
    // error to the errno.
    static std::unique_ptr<TWLinuxOpenFolder> list(
        TWDescriptor, std::string_view name, const TWLinuxOpenFolder* parent, int& error);

    TWFileIdentity identity() const override;
    const std::vector<TWFolderEntry>& entries() const override { return entries_; }
    TWFileLook look(const TWFolderEntry&) const override;
    std::unique_ptr<TWOpenFolder> openFolder(const TWFolderEntry&, int& error) const override;
    std::unique_ptr<TWOpenFolder> openApart(const TWFolderEntry&, int& error) const override;
    bool isPackage() const override;

private:
    TWLinuxOpenFolder(TWDescriptor, std::string_view name, const TWLinuxOpenFolder* parent);

    bool readListing();
    void makeEntries(std::size_t count);
    TWFileKind kindOf(unsigned char type, const char* name) const;

    // -1 if the descriptor was given up and the folder cannot be found again.
    int descriptor() const;
    void giveUpDescriptor() const;
    void giveUpOuterDescriptor() const;
    bool reopenBelowParent() const;

    const TWLinuxOpenFolder* parent_;
    std::string_view name_; // valid only with a parent
    unsigned depth_;
    bool namedAsPackage_;
    bool listsAppRun_ = false;
    mutable TWDescriptor descriptor_;
    mutable std::optional<TWFileIdentity> identity_;
    std::vector<char> listing_; // the records as the system delivered them; the names of entries_ point into it
    std::vector<TWFolderEntry> entries_;
};
