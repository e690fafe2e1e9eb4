#pragma once

#include "cli/TWCommandTable.h"

// `tidewell files ...`: shows and changes the Files rules.
TWCommandGroup TWFilesCommands();
