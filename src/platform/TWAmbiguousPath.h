#pragma once

#include "platform/TWFileSystem.h"

// True if a ".." in the path comes after a symbolic link, so that the kernel and Tidewell, which removes ".." from the
// text, would take the path for two different places. The path is absolute and not yet standardised. Any thread.
bool TWIsAmbiguousPath(const TWFileSystem&, const std::string& path);
