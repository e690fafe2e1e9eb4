#pragma once

#include <memory>
#include <string>

// Held as long as it lives; the system frees it when the process ends, however that happens.
class TWHeldLock {
public:
    virtual ~TWHeldLock() = default;
};

struct TWLockResult {
    std::unique_ptr<TWHeldLock> lock; // nothing when not obtained
    bool heldByAnother = false; // else the lock could not be made: error is the errno
    int error = 0;
};

// Locks between processes, by name of a file that is made when missing. Never waits.
class TWLocks {
public:
    virtual ~TWLocks() = default;
    virtual TWLockResult tryLock(const std::string& path) = 0;
};
