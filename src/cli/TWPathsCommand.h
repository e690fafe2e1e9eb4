#pragma once

#include "cli/TWCommandTable.h"

// `tidewell paths`.
TWCommandGroup TWPathsCommands();
