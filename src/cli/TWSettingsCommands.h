#pragma once

#include "cli/TWCommandTable.h"

// `tidewell settings ...`: shows and changes the settings.
TWCommandGroup TWSettingsCommands();
