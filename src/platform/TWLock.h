#pragma once

#include <chrono>
#include <memory>
#include <string>

// Held as long as it lives; the system frees it when the process ends, however that happens.
class TWHeldLock {
public:
    virtual ~TWHeldLock() = default;
};

struct TWLockResult {
    std::unique_ptr<TWHeldLock> lock; // nothing if the lock was not obtained
    bool heldByAnother = false; // if false and there is no lock, it could not be made: error is the errno
    int error = 0;
};

// Locks between processes, by the name of a file, which is created if missing. Any thread.
class TWLocks {
public:
    virtual ~TWLocks() = default;

    // Never waits. A lock that this process holds already counts as held by another.
    virtual TWLockResult tryLock(const std::string& path) = 0;
};

// Waits until the lock is free, but no longer than the time given.
TWLockResult TWWaitForLock(TWLocks&, const std::string& path, std::chrono::milliseconds longest);
