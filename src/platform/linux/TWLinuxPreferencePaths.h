#pragma once

#include "platform/TWApplications.h"
#include "platform/TWPlaces.h"

// See TWApplications. A Flatpak has folders of its own, which come first.
std::string TWLinuxSharedFileList(const TWApplication&, const TWPlaces&);
std::vector<std::string> TWLinuxPreferencePaths(const TWApplication&, const TWPlaces&);
