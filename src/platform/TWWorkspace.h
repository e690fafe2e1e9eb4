#pragma once

#include "platform/TWRunLoop.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// One running copy of an application: a process of this user, and what it has started.
struct TWRunningCopy {
    std::string application; // the path that was asked for, of a file that describes an application or of a program
    std::int64_t process = 0; // identifier of the copy's first process
    std::uint64_t start = 0; // of that process, in clock ticks since the system started: tells it from later ones
    std::int64_t since = 0; // the same in nanoseconds since 1970 UTC

    bool isSame(const TWRunningCopy& other) const { return process == other.process && start == other.start; }
};

// The running copies of certain applications, looked for again and again. Remembers what it has found, so that a later
// look costs little. A request never reaches a later process with the same identifier.
// Every operation may wait for other programs and belongs into the background; one thread at a time.
class TWRunningCopies {
public:
    virtual ~TWRunningCopies() = default;

    // What runs now, in the order of the identifiers; an application that two paths lead to appears for both. Tidewell
    // itself, what it was started by, and processes of other users never do. Nothing if the processes or the
    // windows that tell them apart could not be listed, or the look was cancelled: then nobody knows what runs.
    virtual std::optional<std::vector<TWRunningCopy>> runningApplications(const TWCancellation&) = 0;

    // Asks a copy that the latest look has found to quit, as if its windows were closed. It may ask the user to save,
    // or refuse. Does not wait for the end. False if the desktop could not be asked in time: then nobody knows whether
    // the copy was asked.
    virtual bool terminate(const TWRunningCopy&) = 0;

    // Ends all processes of the copy at once.
    virtual void forceTerminate(const TWRunningCopy&) = 0;
};

// The applications that run on this machine. In a sandbox only those whose program is below the sandbox's root. Any
// thread.
class TWWorkspace {
public:
    virtual ~TWWorkspace() = default;

    // The paths are absolute. The workspace must outlive what it makes.
    virtual std::unique_ptr<TWRunningCopies> runningCopies(const std::vector<std::string>& paths) const = 0;
};
