#pragma once

#include "platform/TWRunLoop.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// Exit statuses of a command.
namespace TWStatus {
inline constexpr int Success = 0;
inline constexpr int Failure = 1;
inline constexpr int WrongUse = 2;
inline constexpr int NothingRun = 3;
inline constexpr int Interrupted = 130;
}

// What a command printed on standard output and standard error, and its exit status.
struct TWCommandResult {
    int status = TWStatus::Success;
    std::string out;
    std::string err;
};

// Lets the running window carry out commands that change lists or settings, because it has them loaded. The window
// listens; a command that finds a window hands over its command line as bytes. The message names the data folder and
// the sandbox it is meant for, and a window that works on others refuses it. Main thread.
class TWHandover {
public:
    virtual ~TWHandover() = default;

    using CarryOut
        = std::function<TWCommandResult(const std::vector<std::string>& words, const std::string& workingFolder)>;

    // For the window. Returns false if another window listens already or if commands cannot reach this one. Does not
    // block the event loop while a message arrives; calls carryOut for each complete message.
    virtual bool listen(TWRunLoop&, CarryOut carryOut) = 0;

    // For a command. Waits a few seconds for the answer. Returns nothing if no window listens. If the window works on
    // other lists or does not answer, the status is NothingRun; a window that answers too late does not carry out the
    // command any more.
    virtual std::optional<TWCommandResult> handOver(
        const std::vector<std::string>& words, const std::string& workingFolder) const = 0;
};
