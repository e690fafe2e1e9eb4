#pragma once

#include "platform/posix/TWDescriptor.h"

// Open folders with openat2() and its path restrictions or, where that is missing, one component at a time. Both return
// a closed descriptor and set errno on failure. Any thread.

// Fails if any component of the path is a symbolic link. Flags are those of open(); O_DIRECTORY, O_NOFOLLOW and
// O_CLOEXEC are added.
TWDescriptor TWLinuxOpenWithoutLinks(int folder, const char* path, int flags);

// Opens the folder with that name in the given folder. Does not follow a symbolic link; fails with EXDEV if something
// is mounted on it.
TWDescriptor TWLinuxOpenChild(int folder, const char* name, int flags);
