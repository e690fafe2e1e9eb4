#pragma once

#include "cli/TWInvocation.h"
#include "platform/TWHost.h"

// The places that the invocation asks for: the user's own or those of a sandbox, which is created if it is missing. On
// failure returns nothing and sets problem.
std::optional<TWPlaces> TWPlacesFor(const TWInvocation&, const TWHost&, TWCommandResult& problem);

// Returns one line if Tidewell cannot safely read and write its own files in these places, else "". In a sandbox, no
// symbolic link where the settings, the lists and the window's socket are may lead out of it, and no other user may be
// able to put one there.
std::string TWProblemOfPlaces(const TWHost&, const TWPlaces&, const std::string& dataFolder);
