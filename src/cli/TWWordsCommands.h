#pragma once

#include "cli/TWCommandTable.h"

// `tidewell words ...`: the dictionary.
TWCommandGroup TWWordsCommands();
