#pragma once

#include "platform/posix/TWDescriptor.h"

#include <sys/stat.h>

// Open folders with openat2() and its path restrictions or, where that is missing, one component at a time, and regular
// files. All return a closed descriptor and set errno on failure. Any thread.

// Fails if any component of the path is a symbolic link. Flags are those of open(); O_DIRECTORY, O_NOFOLLOW and
// O_CLOEXEC are added.
TWDescriptor TWLinuxOpenWithoutLinks(int folder, const char* path, int flags);

// Opens the folder with that name in the given folder. Does not follow a symbolic link; fails with EXDEV if something
// is mounted on it.
TWDescriptor TWLinuxOpenChild(int folder, const char* name, int flags);

// Opens a regular file for reading and says what it is. Does not follow a symbolic link at the end of the path (ELOOP);
// fails with EISDIR for a folder and with EINVAL for anything else.
TWDescriptor TWLinuxOpenRegular(int folder, const char* path, struct stat& found);
