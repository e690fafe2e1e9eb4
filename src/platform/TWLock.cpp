#include "platform/TWLock.h"

#include <cerrno>
#include <thread>

using namespace std::chrono_literals;

bool TWLockResult::mayBeHeld() const
{
    if (lock)
        return false;
    switch (error) {
    case EROFS:
    case EACCES:
    case ENOSPC:
    case EDQUOT:
    case ENOENT: // there is no data folder, because it could not be created
    case ENOTDIR:
    case EOPNOTSUPP: // the file system has no locks
    case ENOSYS:
        return false;
    default:
        return true;
    }
}

TWLockResult TWWaitForLock(TWLocks& locks, const std::string& path, std::chrono::milliseconds longest)
{
    const auto end = std::chrono::steady_clock::now() + longest;
    auto result = locks.tryLock(path);
    while (result.heldByAnother && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(20ms);
        result = locks.tryLock(path);
    }
    return result;
}
