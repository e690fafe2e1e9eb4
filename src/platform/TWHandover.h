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

// What a command printed and how it ended.
struct TWCommandResult {
    int status = TWStatus::Success;
    std::string out;
    std::string err;
};

// A command that changes lists or settings is carried out by the running window, which has them in use. The window
// listens; a command that finds it hands over its words, as bytes. Each end knows which data folder and which sandbox
// it works on, and words never reach a window that works on others. Main thread.
class TWHandover {
public:
    virtual ~TWHandover() = default;

    using CarryOut
        = std::function<TWCommandResult(const std::vector<std::string>& words, const std::string& workingFolder)>;

    // For the window. Returns false if another one listens already or if commands cannot reach this one. The event loop
    // goes on while a message arrives, however slowly; carryOut is called for each one that is complete.
    virtual bool listen(TWRunLoop&, CarryOut carryOut) = 0;

    // For a command. Waits for the answer as long as the window lives. Returns nothing if no window listens. If the
    // window that listens works on other lists, nothing is carried out and the status is NothingRun.
    virtual std::optional<TWCommandResult> handOver(
        const std::vector<std::string>& words, const std::string& workingFolder) const = 0;
};
