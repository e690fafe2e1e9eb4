#pragma once

#include <chrono>
#include <memory>
#include <string>

// A lock that is held until this object is destroyed or the process ends, however it ends.
class TWHeldLock {
public:
    virtual ~TWHeldLock() = default;
};

struct TWLockResult {
    std::unique_ptr<TWHeldLock> lock; // nullptr if the lock was not obtained
    bool heldByAnother = false; // if false and lock is nullptr, the lock could not be made and error is the errno
    int error = 0;
};

// Locks between processes. Each lock is a file, which is created if it is missing. Any thread.
class TWLocks {
public:
    virtual ~TWLocks() = default;

    // Never waits. A lock that this process already holds counts as held by another.
    virtual TWLockResult tryLock(const std::string& path) = 0;
};

// Blocks until the lock is obtained, but no longer than the given time.
TWLockResult TWWaitForLock(TWLocks&, const std::string& path, std::chrono::milliseconds longest);
