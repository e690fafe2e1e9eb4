#include "platform/linux/TWLinuxOpenFolder.h"

#include "platform/linux/TWLinuxFacts.h"
#include "platform/linux/TWLinuxOpen.h"

#include <dirent.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

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

}

TWLinuxOpenFolder::TWLinuxOpenFolder(TWDescriptor descriptor, std::string_view name, const TWLinuxOpenFolder* parent)
    : parent_(parent)
    , name_(name)
    , depth_(parent ? parent->depth_ + 1 : 0)
    , namedAsPackage_(endsAsPackage(name))
    , descriptor_(std::move(descriptor))
{
}

std::unique_ptr<TWLinuxOpenFolder> TWLinuxOpenFolder::list(
    TWDescriptor descriptor, std::string_view name, const TWLinuxOpenFolder* parent, int& error)
{
    if (descriptor.isOpen()) {
        std::unique_ptr<TWLinuxOpenFolder> folder(new TWLinuxOpenFolder(std::move(descriptor), name, parent));
        folder->giveUpOuterDescriptor();
        if (folder->readListing())
            return folder;
    }
    error = errno;
    return nullptr;
}

// Reads the records by hand: readdir() would copy each name, allocate a stream per folder and hide the kind of some
// errors.
bool TWLinuxOpenFolder::readListing()
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

void TWLinuxOpenFolder::makeEntries(std::size_t count)
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

TWFileKind TWLinuxOpenFolder::kindOf(unsigned char type, const char* name) const
{
    switch (type) {
    case DT_REG:
        return TWFileKind::File;
    case DT_DIR:
        return TWFileKind::Folder;
    case DT_LNK:
        return TWFileKind::Link;
    case DT_UNKNOWN: // some file systems do not tell in the listing
        return TWLookAt(descriptor_.get(), name).facts.kind;
    default:
        return TWFileKind::Other;
    }
}

TWFileLook TWLinuxOpenFolder::look(const TWFolderEntry& entry) const
{
    return TWLookAt(descriptor(), entry.name.data());
}

std::unique_ptr<TWOpenFolder> TWLinuxOpenFolder::openFolder(const TWFolderEntry& entry, int& error) const
{
    return list(TWLinuxOpenChild(descriptor(), entry.name.data(), O_RDONLY), entry.name, this, error);
}

std::unique_ptr<TWOpenFolder> TWLinuxOpenFolder::openApart(const TWFolderEntry& entry, int& error) const
{
    return list(TWLinuxOpenChild(descriptor(), entry.name.data(), O_RDONLY), entry.name, nullptr, error);
}

TWFileIdentity TWLinuxOpenFolder::identity() const
{
    if (!identity_)
        identity_ = TWLookAt(descriptor(), "").facts.identity;
    return *identity_;
}

bool TWLinuxOpenFolder::isPackage() const
{
    return namedAsPackage_ || (listsAppRun_ && faccessat(descriptor(), AppRun.data(), X_OK, 0) == 0);
}

void TWLinuxOpenFolder::giveUpDescriptor() const
{
    if (!descriptor_.isOpen())
        return;
    identity();
    descriptor_.close();
}

// The outermost folder keeps its descriptor: all others are found again from there.
void TWLinuxOpenFolder::giveUpOuterDescriptor() const
{
    if (depth_ <= OpenLevels)
        return;
    const TWLinuxOpenFolder* outer = this;
    for (unsigned level = 0; level < OpenLevels; ++level)
        outer = outer->parent_;
    outer->giveUpDescriptor();
}

int TWLinuxOpenFolder::descriptor() const
{
    if (descriptor_.isOpen())
        return descriptor_.get();
    std::vector<const TWLinuxOpenFolder*> closed;
    for (const auto* folder = this; !folder->descriptor_.isOpen(); folder = folder->parent_)
        closed.push_back(folder);
    for (; !closed.empty(); closed.pop_back()) {
        if (!closed.back()->reopenBelowParent())
            return -1;
        closed.back()->giveUpOuterDescriptor();
    }
    return descriptor_.get();
}

bool TWLinuxOpenFolder::reopenBelowParent() const
{
    TWDescriptor found = TWLinuxOpenChild(parent_->descriptor(), name_.data(), O_RDONLY);
    if (!found.isOpen() || TWLookAt(found.get(), "").facts.identity != identity())
        return false;
    descriptor_ = std::move(found);
    return true;
}
