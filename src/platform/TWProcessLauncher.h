#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWLock.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

// How a child process ended.
struct TWTermination {
    enum class Kind {
        Exited, // code is its exit status
        Signalled, // code is the signal's number
        NotLaunched, // code is the errno of the launch
    };
    Kind kind = Kind::Exited;
    int code = 0;
    std::string
        output; // the first 4 KiB of standard output and standard error together, as bytes; the rest is discarded
};

// A running child process. Destroying this object ends the child and guarantees that the termination call is not made.
// Main thread.
class TWChildProcess {
public:
    virtual ~TWChildProcess() = default;

    // Asks the child to end (SIGTERM). The termination call follows as usual.
    virtual void terminate() = 0;

    // Forces the child to end (SIGKILL).
    virtual void kill() = 0;
};

// Launches child processes without a shell. The arguments are bytes. The environment is small, and fixed but for what
// leads to the session's message bus. No descriptor of ours is inherited but that of a shared lock. The locale is C,
// because loading another one takes a fifth of the running time of a deletion tool.
class TWProcessLauncher {
public:
    virtual ~TWProcessLauncher() = default;

    using Terminated = std::function<void(const TWTermination&)>;

    // From now on each child also holds this lock, as long as it exists at the launch. So the lock stays taken while a
    // child works, even if this process is killed. Main thread.
    virtual void shareLock(const std::weak_ptr<const TWHeldLock>&) { }

    // Starts the program at path in the given working directory. arguments does not include the program's own name. The
    // termination call is made exactly once, always on a later turn of the event loop, even if the program could not be
    // launched. Main thread.
    [[nodiscard]] virtual std::unique_ptr<TWChildProcess> launch(const std::string& path,
        const std::vector<std::string>& arguments, const TWHeldFolder& workingFolder, Terminated)
        = 0;
};
