#include "platform/linux/TWLinuxPreferenceFiles.h"

#include "platform/linux/TWLinuxFacts.h"
#include "platform/linux/TWLinuxOpen.h"
#include "platform/posix/TWFileIO.h"
#include "platform/posix/TWTemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <linux/limits.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <set>

namespace {

constexpr int MostAttempts = 3; // to read a file that changes meanwhile

// Returns 0 or the errno.
int openRegular(const TWHeldFolder& folder, const std::string& name, TWDescriptor& file, struct stat& found)
{
    const auto look = folder.look(name); // refuses what is no single name
    if (!look.isThere())
        return look.error;
    file = TWLinuxOpenRegular(folder.descriptor(), name.c_str(), found);
    return file.isOpen() ? 0 : errno;
}

// Returns EAGAIN if the file has changed meanwhile.
int readOnce(const TWHeldFolder& folder, const std::string& name, std::size_t limit, TWPreferenceFiles::Contents& read)
{
    TWDescriptor file;
    struct stat found { };
    if (const int error = openRegular(folder, name, file, found))
        return error;
    read.facts = TWFactsFrom(found);
    if (read.facts.size > limit)
        return EFBIG;
    read.bytes.reserve(read.facts.size);
    const int error = TWReadAll(file.get(), limit, [&](std::string_view piece) {
        read.bytes += piece;
        return true;
    });
    if (error != 0)
        return error;
    if (fstat(file.get(), &found) != 0)
        return errno;
    return read.facts.isUnchanged(TWFactsFrom(found)) && read.bytes.size() == read.facts.size ? 0 : EAGAIN;
}

// The value of an extended attribute; nothing if it has none or on failure, with errno set.
std::optional<std::string> attribute(int file, const char* name)
{
    std::string value(XATTR_SIZE_MAX, '\0');
    const ssize_t length = fgetxattr(file, name, value.data(), value.size());
    if (length < 0)
        return std::nullopt;
    value.resize(static_cast<std::size_t>(length));
    return value;
}

// The names of its extended attributes. Returns 0 or the errno.
int listAttributes(int file, std::set<std::string>& names)
{
    std::string list(XATTR_LIST_MAX, '\0');
    const ssize_t length = flistxattr(file, list.data(), list.size());
    if (length < 0)
        return errno == ENOTSUP ? 0 : errno;
    for (const char* name = list.data(); name < list.data() + length; name += std::strlen(name) + 1)
        names.emplace(name);
    return 0;
}

// Also removes what the new file has inherited from its folder, such as an access control list. Returns 0 or the errno.
int copyAttributes(int from, int to)
{
    std::set<std::string> names;
    std::set<std::string> inherited;
    if (const int error = listAttributes(from, names))
        return error;
    if (const int error = listAttributes(to, inherited))
        return error;
    for (const auto& name : inherited) {
        const bool isLabel = name.starts_with("security.");
        if (!names.contains(name) && !isLabel && fremovexattr(to, name.c_str()) != 0)
            return errno;
    }
    for (const auto& each : names) {
        const char* name = each.c_str();
        const auto value = attribute(from, name);
        if (!value)
            return errno;
        // A security label that the new file got by itself may not be written, and need not be.
        if (attribute(to, name) != value && fsetxattr(to, name, value->data(), value->size(), 0) != 0)
            return errno;
    }
    return 0;
}

// Gives the new file what the old one has besides its contents. Returns 0 or the errno.
int takeOver(int from, const struct stat& old, int to)
{
    struct stat made { };
    if (fstat(to, &made) != 0)
        return errno;
    const bool sameOwner = made.st_uid == old.st_uid && made.st_gid == old.st_gid;
    if (!sameOwner && fchown(to, old.st_uid, old.st_gid) != 0)
        return errno;
    if (const int error = copyAttributes(from, to))
        return error;
    return fchmod(to, old.st_mode & 07777) == 0 ? 0 : errno;
}

// Ignores errors: the new file is in place, and not every file system can flush a folder.
void flush(const TWHeldFolder& folder)
{
    fsync(TWDescriptor(openat(folder.descriptor(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)).get());
}

}

TWPreferenceFiles::Contents TWLinuxPreferenceFiles::read(
    const TWHeldFolder& folder, const std::string& name, std::size_t limit) const
{
    Contents contents;
    for (int attempt = 0; attempt < MostAttempts; ++attempt) {
        contents = {};
        contents.error = readOnce(folder, name, limit, contents);
        if (contents.error != EAGAIN)
            break;
    }
    if (contents.error != 0)
        contents.bytes.clear();
    return contents;
}

TWPreferenceFiles::Contents TWLinuxPreferenceFiles::readBeginning(
    const TWHeldFolder& folder, const std::string& name, std::size_t length) const
{
    Contents contents;
    TWDescriptor file;
    struct stat found { };
    contents.error = openRegular(folder, name, file, found);
    if (contents.error != 0)
        return contents;
    contents.facts = TWFactsFrom(found);
    contents.bytes.resize(length);
    const ssize_t got = pread(file.get(), contents.bytes.data(), length, 0);
    contents.error = got < 0 ? errno : 0;
    contents.bytes.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return contents;
}

TWPreferenceFiles::Replaced TWLinuxPreferenceFiles::replace(
    const TWHeldFolder& folder, const std::string& name, const TWFileFacts& seen, std::string_view bytes) const
{
    TWDescriptor old;
    struct stat found { };
    if (const int error = openRegular(folder, name, old, found))
        return { error, {} };
    if (!seen.isUnchanged(TWFactsFrom(found)))
        return { ESTALE, {} };
    // This way into the folder cannot lead elsewhere.
    TWTemporaryFile file("/proc/self/fd/" + std::to_string(folder.descriptor()) + "/" + name);
    if (const int error = file.create())
        return { error, {} };
    if (const int error = takeOver(old.get(), found, file.descriptor()))
        return { error, {} };
    if (const int error = TWWriteAll(file.descriptor(), bytes))
        return { error, {} };
    if (fsync(file.descriptor()) != 0)
        return { errno, {} };
    if (const auto look = folder.look(name); !look.isThere() || !seen.isUnchanged(look.facts))
        return { ESTALE, {} };
    if (const int error = file.replaceTarget())
        return { error, {} };
    flush(folder);
    const auto look = folder.look(name);
    struct stat made { };
    if (fstat(file.descriptor(), &made) != 0)
        return { errno, {} };
    return { look.isThere() && look.facts.isUnchanged(TWFactsFrom(made)) ? 0 : ESTALE, look.facts };
}
