#pragma once

#include "cli/TWCommandTable.h"

// `tidewell clean`.
TWCommandGroup TWCleanCommands();

// Runs the cleaners and shows the run on the terminal. Returns when it is over.
TWCommandResult TWRunCleaners(const TWCommandContext&, const TWRunChoice&);
