#pragma once

#include "cli/TWCommandTable.h"

// `tidewell settings ...`.
TWCommandGroup TWSettingsCommands();
