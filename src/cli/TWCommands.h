#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "cli/TWInvocation.h"
#include "platform/TWHandover.h"

// Carries out a command about lists or settings at once, on the delegate's live lists, and says what to print.
TWCommandResult TWRunListCommand(TWTidewellAppDelegate&, const TWInvocation&);

// `tidewell paths`, which needs nothing but the places.
TWCommandResult TWPrintPaths(
    const TWPlaces&, const std::string& dataFolder, const std::string& defaultsFile, bool json);
