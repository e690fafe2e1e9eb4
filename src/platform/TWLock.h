#pragma once

#include <chrono>
#include <memory>
#include <string>

// A lock that is held until this object is destroyed or the process ends, however it ends, and until all child
// processes that share it have ended too.
class TWHeldLock {
public:
    virtual ~TWHeldLock() = default;

    // The descriptor with which a child process shares the lock, or -1. Owned by this object.
    virtual int descriptor() const { return -1; }
};

struct TWLockResult {
    std::unique_ptr<TWHeldLock> lock; // nullptr if the lock was not obtained
    bool heldByAnother = false; // if false and lock is nullptr, the lock could not be made and error is the errno
    int error = 0;

    // True if the lock was not obtained although its file may well be usable, so that another process may hold it now
    // or later. False where no process can lock, as in a home that cannot be written.
    bool mayBeHeld() const;
};

// Locks between processes. Each lock is a file, which is created if it is missing. Any thread.
class TWLocks {
public:
    virtual ~TWLocks() = default;

    // Never waits. A lock that this process already holds counts as held by another. EACCES means that the file could
    // not be created. A file that cannot be opened, belongs to a user other than this one and the owner of its folder,
    // or has several names is refused with EPERM.
    virtual TWLockResult tryLock(const std::string& path) = 0;
};

// Blocks until the lock is obtained, but no longer than the given time.
TWLockResult TWWaitForLock(TWLocks&, const std::string& path, std::chrono::milliseconds longest);
