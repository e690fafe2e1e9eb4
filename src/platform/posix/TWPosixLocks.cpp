#include "platform/posix/TWPosixLocks.h"

#include "platform/posix/TWFolderOwner.h"
#include "support/TWPath.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

class FileLock final : public TWHeldLock {
public:
    explicit FileLock(int descriptor)
        : descriptor_(descriptor)
    {
    }
    ~FileLock() { close(descriptor_); }

private:
    int descriptor_;
};

}

TWLockResult TWPosixLocks::tryLock(const std::string& path)
{
    TWLockResult result;
    const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (descriptor < 0) {
        result.error = errno;
        return result;
    }
    TWGiveToFolderOwner(descriptor, std::string(TWPath::parent(path)));
    if (flock(descriptor, LOCK_EX | LOCK_NB) == 0) {
        result.lock = std::make_unique<FileLock>(descriptor);
        return result;
    }
    result.error = errno;
    result.heldByAnother = result.error == EWOULDBLOCK;
    close(descriptor);
    return result;
}
