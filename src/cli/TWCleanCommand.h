#pragma once

#include "cli/TWCommandTable.h"

// `tidewell clean`.
TWCommandGroup TWCleanCommands();

// One run of the cleaners, shown on the terminal. Returns when it is over.
TWCommandResult TWRunCleaners(const TWCommandContext&, const TWRunChoice&);
