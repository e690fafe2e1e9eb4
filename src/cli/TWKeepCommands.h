#pragma once

#include "cli/TWCommandTable.h"

// `tidewell keep ...`: shows and changes the list of what is never deleted.
TWCommandGroup TWKeepCommands();
