#pragma once

#include "cli/TWCommandTable.h"

// `tidewell files ...`: the Files rules.
TWCommandGroup TWFilesCommands();
