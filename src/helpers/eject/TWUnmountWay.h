#pragma once

#include "TWDeadline.h"
#include "TWJudgedMount.h"

enum class TWUnmountKind {
    Plain,
    Lazy, // detaches the mount although files on it are open; the file system lives on until they are closed
};

// One way of unmounting.
class TWUnmountWay {
public:
    virtual ~TWUnmountWay() = default;

    // What is asked to unmount, for messages.
    virtual const char* name() const = 0;

    // Called once, while the mount is still there.
    virtual bool applies(const TWLinuxMount&) = 0;

    // Returns what the system has answered, in one line: "" if it did not object. Whether the mount has gone is for the
    // mount table to say.
    virtual std::string unmount(const TWJudgedMount&, TWUnmountKind, TWDeadline::Duration limit) = 0;

    // Called after the mount has gone, in whatever way: gives the device back, as far as that is possible.
    virtual void release(const TWDeadline&) { }
};
