#pragma once

#include "cli/TWCommandTable.h"

// `tidewell preview`.
TWCommandGroup TWPreviewCommands();
