#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWPlaces.h"

// One line that names the remedy if TWLinuxPlaces() would give wrong places, else "". That is so if ".." follows a link
// in a variable, because the kernel would take it for another folder than Tidewell, and if the system does not tell
// where the running program is.
std::string TWLinuxProblemOfPlaces(const TWFileSystem&);

// The places according to the environment: HOME (or else the user database) and the XDG variables, where one that is
// not absolute counts as unset. Resources and tools are found relative to the running program.
TWPlaces TWLinuxPlaces();

// The same places below root, a real path of an existing folder: home is root/home. real are the places outside it,
// which a sandbox must not touch.
TWPlaces TWLinuxSandboxPlaces(const std::string& root, const TWPlaces& real);
