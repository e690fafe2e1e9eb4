#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "platform/TWHost.h"
#include "support/TWText.h"

class TWTerminal;

// What a command works with. Main thread.
struct TWCommandContext {
    const TWHost& host;
    const TWPlaces& places;
    const TWDataFolder& dataFolder;
    TWTidewellAppDelegate* delegate = nullptr; // absent only for a command that needs nothing but the places
    TWTerminal* terminal = nullptr; // absent in the window, which gets only commands that change lists
};

// The result of saving something: the problem is "" or one line.
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
