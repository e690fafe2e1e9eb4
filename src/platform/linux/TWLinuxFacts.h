#pragma once

#include "platform/TWFileSystem.h"

#include <sys/stat.h>

// What the system's answers mean.

TWFileKind TWKindOfMode(mode_t);
TWFileFacts TWFactsFrom(const struct stat&);

// Of a call that has just failed with this errno.
TWFileLook TWFailedLook(int error);

// Asks about a name in an open folder, or about the folder itself if the name is "", without following a link.
TWFileLook TWLookAt(int folder, const char* name);
