#pragma once

#include "cli/TWInvocation.h"
#include "platform/TWHost.h"

// The places of the run that the invocation asks for: the user's own, or those of a sandbox, which is created if
// missing. On failure returns nothing and sets problem.
std::optional<TWPlaces> TWPlacesFor(const TWInvocation&, const TWHost&, TWCommandResult& problem);

// One line if Tidewell cannot read and write its own files in these places without harm, else "": in a sandbox no link
// may lead out of it from where the settings, the lists and the window's socket are.
std::string TWProblemOfPlaces(const TWFileSystem&, const TWPlaces&, const std::string& dataFolder);
