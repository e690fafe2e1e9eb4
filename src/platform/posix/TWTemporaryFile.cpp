#include "platform/posix/TWTemporaryFile.h"

#include "support/TWPath.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace {

constexpr std::string_view Prefix = ".tidewell-";
constexpr std::size_t HashDigits = 16;
constexpr int MostAttempts = 20;
constexpr auto Pause = std::chrono::milliseconds(10);

// A name of fixed length, because the target's own name may already have the greatest length allowed. The hash (FNV-1a)
// must be the same in all versions of Tidewell.
std::string nameFor(std::string_view target)
{
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : TWPath::lastComponent(target))
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    char digits[HashDigits + 1];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(hash));
    return std::string(Prefix) + digits;
}

// False only if another process or thread holds the lock. On a file system without locks it succeeds.
bool lock(int file)
{
    return flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

// False if the previous holder of the lock has renamed or removed the file in the meantime.
bool isStillAt(const std::string& path, int file)
{
    struct stat named;
    struct stat opened;
    return lstat(path.c_str(), &named) == 0 && fstat(file, &opened) == 0 && named.st_dev == opened.st_dev
        && named.st_ino == opened.st_ino;
}

}

TWTemporaryFile::TWTemporaryFile(std::string target)
    : target_(std::move(target))
    , path_(target_.substr(0, target_.rfind('/') + 1) + nameFor(target_))
{
}

TWTemporaryFile::~TWTemporaryFile()
{
    // Still locked, so it is still ours.
    if (exists_)
        unlink(path_.c_str());
}

int TWTemporaryFile::create()
{
    int error = createOnce();
    for (int attempt = 1; error == EBUSY && attempt < MostAttempts; ++attempt) {
        std::this_thread::sleep_for(Pause);
        error = createOnce();
    }
    return error;
}

// Until it is locked, the new file looks like a leftover to others: EBUSY if one of them is removing it.
int TWTemporaryFile::createOnce()
{
    if (const int error = removeLeftover(path_))
        return error;
    file_ = TWDescriptor(open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file_.isOpen())
        return errno == EEXIST ? EBUSY : errno;
    exists_ = lock(file_.get()) && isStillAt(path_, file_.get());
    return exists_ ? 0 : EBUSY;
}

int TWTemporaryFile::replaceTarget()
{
    if (rename(path_.c_str(), target_.c_str()) != 0)
        return errno;
    exists_ = false;
    return 0;
}

bool TWTemporaryFile::isName(std::string_view name)
{
    return name.size() == Prefix.size() + HashDigits && name.starts_with(Prefix)
        && name.find_first_not_of("0123456789abcdef", Prefix.size()) == std::string_view::npos;
}

int TWTemporaryFile::removeLeftover(const std::string& path)
{
    constexpr int Flags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    TWDescriptor file(open(path.c_str(), O_RDONLY | Flags));
    if (!file.isOpen() && errno == EACCES) // it has the mode of the file that it was going to replace
        file = TWDescriptor(open(path.c_str(), O_WRONLY | Flags));
    if (!file.isOpen())
        return errno == ENOENT ? 0 : errno == ELOOP ? EEXIST : errno;
    struct stat facts;
    if (fstat(file.get(), &facts) != 0)
        return errno;
    if (!S_ISREG(facts.st_mode))
        return EEXIST;
    if (!lock(file.get()))
        return EBUSY;
    return !isStillAt(path, file.get()) || unlink(path.c_str()) == 0 ? 0 : errno;
}
