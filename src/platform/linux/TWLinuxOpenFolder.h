#pragma once

#include "platform/TWFileSystem.h"
#include "platform/posix/TWDescriptor.h"

#include <optional>

// A chain of these keeps about OpenLevels descriptors: outer folders give theirs up while the walk is deep below them
// and get them back when they are used again, but only if the folder found there is still the same one. A chain that
// meets the limit of open files keeps even fewer.
class TWLinuxOpenFolder final : public TWOpenFolder {
public:
    static constexpr unsigned OpenLevels = 16;

    // Takes over a descriptor of the folder and lists it. name is the folder's own; with a parent it is kept as a view
    // into the parent's listing. The cancellation may be absent. If the folder cannot be read, or the descriptor is
    // closed, returns nothing and sets error to the errno.
    static std::unique_ptr<TWOpenFolder> list(
        TWDescriptor, std::string_view name, const TWLinuxOpenFolder* parent, const TWCancellation*, int& error);

    ~TWLinuxOpenFolder() override;

    TWFileIdentity identity() const override;
    const std::vector<TWFolderEntry>& entries() const override { return listing_->entries; }
    TWFileLook look(const TWFolderEntry&) const override;
    std::unique_ptr<TWOpenFolder> openFolder(const TWFolderEntry&, int& error) const override;
    std::unique_ptr<TWOpenFolder> duplicate(int& error) const override;
    bool isPackage() const override;

private:
    // Shared by all handles on the folder, and not changed once it is read.
    struct Listing {
        std::vector<char> records; // as the system delivered them; the names of entries point into it
        std::vector<TWFolderEntry> entries;
        bool namedAsPackage = false;
        bool listsAppRun = false;
    };

    struct Handle {
        TWDescriptor descriptor;
        std::optional<TWFileIdentity> identity; // always there when the descriptor was given up

        TWFileIdentity knownIdentity();
        void giveUp();
        bool takeIfSame(TWDescriptor found);
    };

    TWLinuxOpenFolder(TWDescriptor, std::string_view name, const TWLinuxOpenFolder* parent, const TWCancellation*);

    std::shared_ptr<const Listing> readListing() const;
    void makeEntries(Listing&, std::size_t count) const;
    TWFileKind kindOf(unsigned char type, const char* name) const;

    TWDescriptor openChild(std::string_view name) const;

    // -1, with errno set, if the descriptor was given up and the folder cannot be opened again.
    int descriptor() const;
    void giveUpOuterDescriptor() const;
    bool giveUpOuterDescriptors() const;

    const TWLinuxOpenFolder* parent_;
    std::string_view name_; // valid only with a parent
    const TWCancellation* cancellation_;
    unsigned depth_;
    std::shared_ptr<Handle> handle_;
    std::weak_ptr<Handle> parentHandle_; // empty once the parent is destroyed
    std::shared_ptr<const Listing> listing_;
};
