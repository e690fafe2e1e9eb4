#include "platform/linux/TWLinuxOpenFolder.h"

#include "platform/TWRunLoop.h"
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

TWLinuxOpenFolder::TWLinuxOpenFolder(
    TWDescriptor descriptor, std::string_view name, const TWLinuxOpenFolder* parent, const TWCancellation* cancellation)
    : parent_(parent)
    , name_(name)
    , cancellation_(cancellation)
    , depth_(parent ? parent->depth_ + 1 : 0)
    , handle_(std::make_shared<Handle>())
{
    handle_->descriptor = std::move(descriptor);
    if (parent)
        parentHandle_ = parent->handle_;
}

// The walk goes on in the parent. If that has given up its descriptor, this is the quickest way to it: the way down
// from the outermost folder would make the walk of a deep tree quadratic.
TWLinuxOpenFolder::~TWLinuxOpenFolder()
{
    const auto parent = parentHandle_.lock();
    if (parent && !parent->descriptor.isOpen() && handle_->descriptor.isOpen())
        parent->takeIfSame(TWLinuxOpenChild(handle_->descriptor.get(), "..", O_RDONLY));
}

std::unique_ptr<TWOpenFolder> TWLinuxOpenFolder::list(TWDescriptor descriptor, std::string_view name,
    const TWLinuxOpenFolder* parent, const TWCancellation* cancellation, int& error)
{
    if (!descriptor.isOpen()) {
        error = errno;
        return nullptr;
    }
    std::unique_ptr<TWLinuxOpenFolder> folder(new TWLinuxOpenFolder(std::move(descriptor), name, parent, cancellation));
    folder->giveUpOuterDescriptor();
    folder->listing_ = folder->readListing();
    if (folder->listing_)
        return folder;
    error = errno;
    return nullptr;
}

// Reads the records by hand: readdir() would copy each name, allocate a stream per folder and hide the kind of some
// errors.
std::shared_ptr<const TWLinuxOpenFolder::Listing> TWLinuxOpenFolder::readListing() const
{
    alignas(dirent64) char buffer[32 * 1024];
    auto listing = std::make_shared<Listing>();
    std::size_t count = 0;
    for (;;) {
        const ssize_t length = getdents64(handle_->descriptor.get(), buffer, sizeof buffer);
        if (length < 0)
            return nullptr;
        if (cancellation_ && cancellation_->cancelled()) {
            errno = ECANCELED;
            return nullptr;
        }
        if (length == 0)
            break;
        listing->records.insert(listing->records.end(), buffer, buffer + length);
        for (ssize_t at = 0; at < length; ++count)
            at += reinterpret_cast<const dirent64*>(buffer + at)->d_reclen;
    }
    listing->namedAsPackage = endsAsPackage(name_);
    makeEntries(*listing, count);
    return listing;
}

void TWLinuxOpenFolder::makeEntries(Listing& listing, std::size_t count) const
{
    listing.entries.reserve(count);
    for (std::size_t at = 0; at < listing.records.size();) {
        const auto* record = reinterpret_cast<const dirent64*>(listing.records.data() + at);
        at += record->d_reclen;
        if (isDots(record->d_name))
            continue;
        const TWFolderEntry entry{ record->d_name, kindOf(record->d_type, record->d_name) };
        if (entry.name == AppRun && entry.kind != TWFileKind::Folder)
            listing.listsAppRun = true;
        listing.entries.push_back(entry);
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
        return TWLookAt(handle_->descriptor.get(), name).facts.kind;
    default:
        return TWFileKind::Other;
    }
}

TWFileLook TWLinuxOpenFolder::look(const TWFolderEntry& entry) const
{
    const int here = descriptor();
    if (here < 0)
        return { TWPresence::Unknown, errno, {} };
    return TWLookAt(here, entry.name.data());
}

std::unique_ptr<TWOpenFolder> TWLinuxOpenFolder::openFolder(const TWFolderEntry& entry, int& error) const
{
    return list(openChild(entry.name), entry.name, this, cancellation_, error);
}

std::unique_ptr<TWOpenFolder> TWLinuxOpenFolder::duplicate(int& error) const
{
    const int here = descriptor();
    TWDescriptor copy(here < 0 ? -1 : fcntl(here, F_DUPFD_CLOEXEC, 0));
    if (!copy.isOpen()) {
        error = errno;
        return nullptr;
    }
    std::unique_ptr<TWLinuxOpenFolder> folder(
        new TWLinuxOpenFolder(std::move(copy), std::string_view(), nullptr, cancellation_));
    folder->handle_->identity = handle_->identity;
    folder->listing_ = listing_;
    return folder;
}

TWFileIdentity TWLinuxOpenFolder::identity() const
{
    return handle_->knownIdentity();
}

bool TWLinuxOpenFolder::isPackage() const
{
    return listing_->namedAsPackage || (listing_->listsAppRun && faccessat(descriptor(), AppRun.data(), X_OK, 0) == 0);
}

// When the process has no descriptor left, this chain gives up those it can open again later.
TWDescriptor TWLinuxOpenFolder::openChild(std::string_view name) const
{
    const int here = descriptor();
    if (here < 0)
        return TWDescriptor();
    auto child = TWLinuxOpenChild(here, name.data(), O_RDONLY);
    if (!child.isOpen() && (errno == EMFILE || errno == ENFILE) && giveUpOuterDescriptors())
        child = TWLinuxOpenChild(here, name.data(), O_RDONLY);
    return child;
}

TWFileIdentity TWLinuxOpenFolder::Handle::knownIdentity()
{
    if (!identity)
        identity = TWLookAt(descriptor.get(), "").facts.identity;
    return *identity;
}

void TWLinuxOpenFolder::Handle::giveUp()
{
    if (!descriptor.isOpen())
        return;
    knownIdentity();
    descriptor.close();
}

bool TWLinuxOpenFolder::Handle::takeIfSame(TWDescriptor found)
{
    if (!found.isOpen())
        return false;
    if (TWLookAt(found.get(), "").facts.identity != knownIdentity()) {
        errno = ESTALE;
        return false;
    }
    descriptor = std::move(found);
    return true;
}

// The outermost folder keeps its descriptor: all others are found again from there.
void TWLinuxOpenFolder::giveUpOuterDescriptor() const
{
    if (depth_ <= OpenLevels)
        return;
    const TWLinuxOpenFolder* outer = this;
    for (unsigned level = 0; level < OpenLevels; ++level)
        outer = outer->parent_;
    outer->handle_->giveUp();
}

// False, with errno as it was, if there was none.
bool TWLinuxOpenFolder::giveUpOuterDescriptors() const
{
    const int error = errno;
    bool any = false;
    for (const auto* folder = parent_; folder && folder->parent_; folder = folder->parent_) {
        any = any || folder->handle_->descriptor.isOpen();
        folder->handle_->giveUp();
    }
    errno = error;
    return any;
}

int TWLinuxOpenFolder::descriptor() const
{
    if (handle_->descriptor.isOpen())
        return handle_->descriptor.get();
    std::vector<const TWLinuxOpenFolder*> closed;
    for (const auto* folder = this; !folder->handle_->descriptor.isOpen(); folder = folder->parent_)
        closed.push_back(folder);
    for (; !closed.empty(); closed.pop_back()) {
        const auto& folder = *closed.back();
        if (!folder.handle_->takeIfSame(folder.parent_->openChild(folder.name_))) {
            // It was open before, so it has been moved or removed. No caller may take an entry of it for gone.
            if (errno == ENOENT || errno == ENOTDIR)
                errno = ESTALE;
            return -1;
        }
        folder.giveUpOuterDescriptor();
    }
    return handle_->descriptor.get();
}
