#pragma once

#include "cli/TWCommandTable.h"

// `tidewell demo`: fills a new sandbox with sample traces (a Trash with records, thumbnails, and documents, some of
// which have a word of a sample dictionary in their names), switches on every cleaner that works, and cleans.
TWCommandGroup TWDemoCommands();
