#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "platform/TWHost.h"
#include "support/TWText.h"

class TWTerminal;

// What a command needs. Main thread.
struct TWCommandContext {
    const TWHost& host;
    const TWPlaces& places;
    const TWDataFolder& dataFolder;
    TWTidewellAppDelegate* delegate = nullptr; // nullptr only for a command of the kind NeedsPlaces
    TWTerminal* terminal = nullptr; // nullptr in the window, which gets only commands that change lists
};

// The result of saving: success if the problem is "", else a failure with that line.
inline TWCommandResult TWSaved(const std::string& problem)
{
    return problem.empty() ? TWCommandResult()
                           : TWCommandResult{ TWStatus::Failure, "", TWText::oneLine(problem) + "\n" };
}

// The result of a command that was used wrongly. The line ends with a newline.
inline TWCommandResult TWWrongUse(std::string line)
{
    return { TWStatus::WrongUse, "", std::move(line) };
}
