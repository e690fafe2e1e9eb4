#pragma once

#include "platform/TWFileSystem.h"

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

// A running child process. Destroying it ends the child (SIGTERM) and guarantees that the termination call is not made.
// Main thread.
class TWChildProcess {
public:
    virtual ~TWChildProcess() = default;

    // Asks the child to end. The termination call follows as for any other end.
    virtual void terminate() = 0;

    // Ends a child that does not listen to terminate().
    virtual void kill() = 0;
};

// Launches child processes without a shell: the arguments are bytes, the environment is small and fixed with the C
// locale (loading another one takes a fifth of a deletion tool's life), and no descriptor of ours is inherited.
class TWProcessLauncher {
public:
    virtual ~TWProcessLauncher() = default;

    using Terminated = std::function<void(const TWTermination&)>;

    // Starts the tool with the given working folder. arguments does not include the program's own name. The termination
    // call is made exactly once, always on a later turn of the event loop, also if the tool could not be launched. Main
    // thread.
    [[nodiscard]] virtual std::unique_ptr<TWChildProcess> launch(const std::string& path,
        const std::vector<std::string>& arguments, const TWHeldFolder& workingFolder, Terminated)
        = 0;
};
