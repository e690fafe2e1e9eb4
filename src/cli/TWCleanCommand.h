#pragma once

#include "cli/TWCommandTable.h"

// `tidewell clean`.
TWCommandGroup TWCleanCommands();

// Reads --only A,B, or else takes the cleaners that are switched on. Returns "" or one line about a name that is not a
// cleaner's.
std::string TWReadCleaners(const TWCommandContext&, const TWInvocation&, TWRunChoice&);

// The argument --only of a command; purpose is the beginning of its help.
TWArgument TWOnlyArgument(const std::string& purpose);

// Runs the cleaners and shows the run on the terminal. Returns when it is over.
TWCommandResult TWRunCleaners(const TWCommandContext&, const TWRunChoice&);
