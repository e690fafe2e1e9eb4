#pragma once

#include "platform/TWFileSystem.h"

#include <sys/stat.h>

// Conversions from the system's types to ours. Any thread.

TWFileKind TWKindOfMode(mode_t);
TWFileFacts TWFactsFrom(const struct stat&);

// True if something is mounted on the folder. Needs Linux 5.8; false if the kernel cannot tell.
bool TWIsMountRoot(const struct statx&);

// The look that stands for a call that has failed with this errno.
TWFileLook TWFailedLook(int error);

// Looks at a name in an open folder, or at the folder itself if the name is "", without following a symbolic link.
TWFileLook TWLookAt(int folder, const char* name);
