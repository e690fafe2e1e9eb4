#pragma once

#include "cli/TWCommandTable.h"

// `tidewell applications ...`: shows and changes the list of applications that are quit.
TWCommandGroup TWApplicationsCommands();
