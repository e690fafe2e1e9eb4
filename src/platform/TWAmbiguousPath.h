#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWPlaces.h"

// True if a ".." in the path comes after a symbolic link, so that the kernel and Tidewell, which removes ".." from the
// text, would take the path for two different places. Also true if a ".." leads out of a folder such as "~/.cache" that
// an XDG variable has moved. Takes the path as it was written, not yet expanded. Any thread.
bool TWIsAmbiguousPath(const TWFileSystem&, const TWPlaces&, const std::string& written);
