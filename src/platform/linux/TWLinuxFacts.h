#pragma once

#include "platform/TWFileSystem.h"

#include <sys/stat.h>

// Conversions from the system's types to ours. Any thread.

TWFileKind TWKindOfMode(mode_t);
TWFileFacts TWFactsFrom(const struct stat&);

// The look that stands for a call that has failed with this errno.
TWFileLook TWFailedLook(int error);

// Looks at a name in an open folder, or at the folder itself if the name is "", without following a symbolic link.
TWFileLook TWLookAt(int folder, const char* name);
