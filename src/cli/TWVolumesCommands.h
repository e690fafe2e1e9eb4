#pragma once

#include "cli/TWCommandTable.h"

// `tidewell volumes ...`: shows and changes which volumes are checked.
TWCommandGroup TWVolumesCommands();
