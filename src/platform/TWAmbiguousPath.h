#pragma once

#include "platform/TWFileSystem.h"

// True if ".." in the path follows a link, so that the shell and Tidewell would take it for two different places. The
// path is absolute and has not been standardised. Any thread.
bool TWIsAmbiguousPath(const TWFileSystem&, const std::string& path);
