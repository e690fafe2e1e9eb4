#include "platform/posix/TWPosixOpenFolder.h"

#include <dirent.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

constexpr int FolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr std::string_view AppRun = "AppRun";
constexpr std::string_view PackageEndings[] = { ".app", ".bundle", ".framework", ".photoslibrary" };

bool endsAsPackage(std::string_view name)
{
    return std::ranges::any_of(PackageEndings, [name](std::string_view ending) {
        return name.size() > ending.size()
            && strncasecmp(name.data() + name.size() - ending.size(), ending.data(), ending.size()) == 0;
    });
}

bool isDots(const char* name)
{
    return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

TWDescriptor openBelow(const TWPosixOpenFolder& parent, const char* name)
{
    return TWDescriptor(openat(parent.descriptor(), name, FolderFlags));
}

}

TWPosixOpenFolder::TWPosixOpenFolder(TWDescriptor descriptor, std::string_view name, const TWPosixOpenFolder* parent)
    : parent_(parent)
    , name_(name)
    , depth_(parent ? parent->depth_ + 1 : 0)
    , namedAsPackage_(endsAsPackage(name))
    , descriptor_(std::move(descriptor))
{
}

std::unique_ptr<TWPosixOpenFolder> TWPosixOpenFolder::list(
    TWDescriptor descriptor, std::string_view name, const TWPosixOpenFolder* parent)
{
    if (!descriptor.isOpen())
        return nullptr;
    std::unique_ptr<TWPosixOpenFolder> folder(new TWPosixOpenFolder(std::move(descriptor), name, parent));
    folder->giveUpOuterDescriptor();
    return folder->readListing() ? std::move(folder) : nullptr;
}

// Reads the records by hand: readdir() would copy each name, allocate a stream per folder and hide the kind of some
// errors.
bool TWPosixOpenFolder::readListing()
{
    alignas(dirent64) char buffer[32 * 1024];
    std::size_t count = 0;
    for (;;) {
        const ssize_t length = getdents64(descriptor_.get(), buffer, sizeof buffer);
        if (length < 0)
            return false;
        if (length == 0)
            break;
        listing_.insert(listing_.end(), buffer, buffer + length);
        for (ssize_t at = 0; at < length; ++count)
            at += reinterpret_cast<const dirent64*>(buffer + at)->d_reclen;
    }
    makeEntries(count);
    return true;
}

void TWPosixOpenFolder::makeEntries(std::size_t count)
{
    entries_.reserve(count);
    for (std::size_t at = 0; at < listing_.size();) {
        const auto* record = reinterpret_cast<const dirent64*>(listing_.data() + at);
        at += record->d_reclen;
        if (isDots(record->d_name))
            continue;
        const TWFolderEntry entry{ record->d_name, kindOf(record->d_type, record->d_name) };
        if (entry.name == AppRun && entry.kind != TWFileKind::Folder)
            listsAppRun_ = true;
        entries_.push_back(entry);
    }
}

TWFileKind TWPosixOpenFolder::kindOf(unsigned char type, const char* name) const
{
    if (type == DT_UNKNOWN) { // some file systems do not tell in the listing
        struct stat found;
        if (fstatat(descriptor_.get(), name, &found, AT_SYMLINK_NOFOLLOW) == 0)
            type = static_cast<unsigned char>(IFTODT(found.st_mode));
    }
    switch (type) {
    case DT_REG:
        return TWFileKind::File;
    case DT_DIR:
        return TWFileKind::Folder;
    case DT_LNK:
        return TWFileKind::Link;
    default:
        return TWFileKind::Other;
    }
}

std::unique_ptr<TWOpenFolder> TWPosixOpenFolder::openFolder(const TWFolderEntry& entry) const
{
    return openPosixFolder(entry);
}

std::unique_ptr<TWPosixOpenFolder> TWPosixOpenFolder::openPosixFolder(const TWFolderEntry& entry) const
{
    return list(openBelow(*this, entry.name.data()), entry.name, this); // the name ends with a NUL in the listing
}

bool TWPosixOpenFolder::isPackage() const
{
    return namedAsPackage_ || (listsAppRun_ && faccessat(descriptor(), AppRun.data(), X_OK, 0) == 0);
}

void TWPosixOpenFolder::giveUpDescriptor() const
{
    struct stat found;
    if (!descriptor_.isOpen() || fstat(descriptor_.get(), &found) != 0)
        return;
    device_ = found.st_dev;
    inode_ = found.st_ino;
    descriptor_.close();
}

// The outermost folder keeps its descriptor: all others are found again from there.
void TWPosixOpenFolder::giveUpOuterDescriptor() const
{
    if (depth_ <= OpenLevels)
        return;
    const TWPosixOpenFolder* outer = this;
    for (unsigned level = 0; level < OpenLevels; ++level)
        outer = outer->parent_;
    outer->giveUpDescriptor();
}

int TWPosixOpenFolder::descriptor() const
{
    if (descriptor_.isOpen())
        return descriptor_.get();
    std::vector<const TWPosixOpenFolder*> closed;
    for (const auto* folder = this; !folder->descriptor_.isOpen(); folder = folder->parent_)
        closed.push_back(folder);
    for (; !closed.empty(); closed.pop_back()) {
        if (!closed.back()->reopenBelowParent())
            return -1;
        closed.back()->giveUpOuterDescriptor();
    }
    return descriptor_.get();
}

bool TWPosixOpenFolder::reopenBelowParent() const
{
    TWDescriptor found = openBelow(*parent_, name_.data());
    struct stat facts;
    if (!found.isOpen() || fstat(found.get(), &facts) != 0 || facts.st_dev != device_ || facts.st_ino != inode_)
        return false;
    descriptor_ = std::move(found);
    return true;
}
