#pragma once

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
class TWChildProcess {
public:
    virtual ~TWChildProcess() = default;

    // Asks the child to end. The termination call follows as for any other end.
    virtual void terminate() = 0;

    // Ends a child that does not listen to terminate().
    virtual void kill() = 0;
};

// Launches child processes without a shell: the arguments are bytes, the environment is small and fixed with the C
// locale (a fifth of the life of a deletion tool is spent on loading another one), and none of our descriptors are
// handed on.
class TWProcessLauncher {
public:
    virtual ~TWProcessLauncher() = default;

    using Terminated = std::function<void(const TWTermination&)>;

    // Main thread. The termination call is made exactly once, always on a later turn of the run loop, also when the
    // tool could not be launched. arguments does not hold the program's own name.
    [[nodiscard]] virtual std::unique_ptr<TWChildProcess> launch(
        const std::string& path, const std::vector<std::string>& arguments, Terminated)
        = 0;
};
