#pragma once

#include "cli/TWCommandTable.h"

// Loads what every command may use and carries the command out. Says in its result which settings or list files could
// not be read.
TWCommandResult TWRunCommand(const TWCommandContext&, const TWInvocation&);

// A command that changes lists and the words it was parsed from.
struct TWListChange {
    std::vector<std::string> words;
    std::string workingFolder;
    std::function<TWCommandResult()> carryOutHere; // reads the lists only when called
};

// Lets the running window make the change. If there is none, makes it here under the lock of the lists.
TWCommandResult TWChangeLists(const TWHandover&, TWLocks&, const TWDataFolder&, const TWListChange&);

// The lock under which lists are read and written, by a command or a window that starts. Waits a moment for the other
// program.
TWLockResult TWLockLists(TWLocks&, const TWDataFolder&);

inline constexpr auto TWListsBusy = "Another Tidewell command is changing the lists. Please try again.\n";
