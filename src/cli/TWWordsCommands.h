#pragma once

#include "cli/TWCommandTable.h"

// `tidewell words ...`: shows and changes the dictionary.
TWCommandGroup TWWordsCommands();
