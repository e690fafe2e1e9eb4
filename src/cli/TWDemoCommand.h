#pragma once

#include "cli/TWCommandTable.h"

// `tidewell demo`: fills a new sandbox with sample traces (a Trash with records, thumbnails, documents of which some
// names hold a word of a sample dictionary), switches on what cleans them, and cleans.
TWCommandGroup TWDemoCommands();
