#pragma once

#include "cli/TWCommandTable.h"

// Prepares the delegate and carries the command out. The result also names the settings and list files that could not
// be read.
TWCommandResult TWRunCommand(const TWCommandContext&, const TWInvocation&);

// A command that changes lists, with the command line that it was parsed from.
struct TWListChange {
    std::vector<std::string> words;
    std::string workingFolder;
    std::function<TWCommandResult()> carryOutHere; // must not read the lists before it is called
};

// Lets the running window make the change. If no window runs, makes it here while holding the lock of the lists.
TWCommandResult TWChangeLists(const TWHandover&, TWLocks&, const TWDataFolder&, const TWListChange&);

// Takes the lock under which a command or a starting window reads and writes the lists. Waits a moment if another
// process holds it.
TWLockResult TWLockLists(TWLocks&, const TWDataFolder&);

// One line if the lists must not be read or written with this result of TWLockLists(), else "". Where no process can
// lock, as in a home that cannot be written, the answer is "".
std::string TWRefusalOfLists(const TWLockResult&, const TWDataFolder&);
