#pragma once

#include "platform/TWPlaces.h"

#include <optional>

// The places according to the environment: HOME (or else the user database) and the XDG variables, where one that is
// not absolute counts as unset. Resources and tools are found relative to the running program.
TWPlaces TWLinuxPlaces();

// The same places below root, a real path of an existing folder: home is root/home, and the environment names only the
// real folders that a sandbox must not touch.
TWPlaces TWLinuxSandboxPlaces(const std::string& root);
