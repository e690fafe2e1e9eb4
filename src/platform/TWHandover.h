#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

// What a command printed and how it ended.
struct TWCommandResult {
    int status = 0;
    std::string out;
    std::string err;
};

// Commands that look at or change lists and settings are carried out by the running window, on its live lists. The
// window listens; a command that finds it hands over its words, as bytes. Main thread.
class TWHandover {
public:
    virtual ~TWHandover() = default;

    using CarryOut
        = std::function<TWCommandResult(const std::vector<std::string>& words, const std::string& workingFolder)>;

    // For the window. False when another one listens already.
    virtual bool listen(CarryOut) = 0;

    // For a command. Nothing when no window listens.
    virtual std::optional<TWCommandResult> handOver(
        const std::vector<std::string>& words, const std::string& workingFolder) const = 0;
};
