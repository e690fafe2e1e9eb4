#pragma once

#include "platform/TWPlaces.h"

// Which mounts must stay, wherever their mount points come from. Any thread.

// Real paths without which Tidewell and this user's session do not work: the home folder, Tidewell's own folders and
// its program.
std::vector<std::string> TWLinuxNeededPaths(const TWPlaces&);

// True for a mount point of the system, such as "/", "/usr" or "/home", and for one on which a needed path lies.
bool TWLinuxIsSystemMount(const std::string& point, const std::vector<std::string>& neededPaths);
