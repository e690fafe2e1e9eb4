#pragma once

#include "cli/TWCommandTable.h"

// `tidewell recent-items ...`: shows and changes the Recent Items rules.
TWCommandGroup TWRecentItemsCommands();
