#include "platform/posix/TWPosixLocks.h"

#include "platform/posix/TWDescriptor.h"
#include "platform/posix/TWFolderOwner.h"
#include "support/TWPath.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace {

class FileLock final : public TWHeldLock {
public:
    explicit FileLock(TWDescriptor descriptor)
        : descriptor_(std::move(descriptor))
    {
    }
    int descriptor() const override { return descriptor_.get(); }

private:
    const TWDescriptor descriptor_;
};

// Only a file that was created here is given to the owner of its folder: an existing one may be another name of a file
// that must stay root's. Returns 0 or the errno.
int openOrCreate(const std::string& path, TWDescriptor& file)
{
    constexpr int Flags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    file = TWDescriptor(open(path.c_str(), Flags | O_CREAT | O_EXCL, 0600));
    if (file.isOpen()) {
        // Ignores errors: it is a lock all the same, and some file systems cannot change owners.
        TWGiveToFolderOwner(file.get(), std::string(TWPath::parent(path)));
        return 0;
    }
    if (errno != EEXIST)
        return errno;
    file = TWDescriptor(open(path.c_str(), Flags));
    // The file exists, so a process that may open it can lock it. EACCES would mean that no process can.
    return file.isOpen() ? 0 : errno == EACCES ? EPERM : errno;
}

// False for a file that somebody else can lock at will, or that is something else under another name.
bool isOurs(int file, const std::string& folder)
{
    struct stat facts;
    struct stat parent;
    return fstat(file, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_nlink <= 1
        && (facts.st_uid == geteuid() || (stat(folder.c_str(), &parent) == 0 && facts.st_uid == parent.st_uid));
}

}

TWLockResult TWPosixLocks::tryLock(const std::string& path)
{
    TWLockResult result;
    TWDescriptor file;
    result.error = openOrCreate(path, file);
    if (result.error == 0 && !isOurs(file.get(), std::string(TWPath::parent(path))))
        result.error = EPERM;
    if (result.error == 0 && flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        result.error = errno;
    result.heldByAnother = result.error == EWOULDBLOCK;
    if (result.error == 0)
        result.lock = std::make_unique<FileLock>(std::move(file));
    return result;
}
