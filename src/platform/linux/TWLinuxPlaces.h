#pragma once

#include "platform/TWPlaces.h"

#include <optional>

// From the environment: HOME (else the user database) and the XDG variables, of which those that are not absolute count
// as unset. Resources and tools are found relative to the running program.
TWPlaces TWLinuxPlaces();

// The same world below root (a real path, made by the caller): home is root/home, and nothing of the environment is
// used.
TWPlaces TWLinuxSandboxPlaces(const std::string& root);
