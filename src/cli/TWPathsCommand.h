#pragma once

#include "cli/TWCommandTable.h"

// `tidewell paths`: shows where everything is.
TWCommandGroup TWPathsCommands();
