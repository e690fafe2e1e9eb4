#pragma once

#include "cli/TWCommandTable.h"

// `tidewell logs ...`: shows and changes which logs are checked.
TWCommandGroup TWLogsCommands();
