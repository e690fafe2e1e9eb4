#pragma once

#include "platform/posix/TWDescriptor.h"

// Opens folders with the kernel's own path restrictions, openat2(), or where that is missing one component at a time.
// Both return a closed descriptor and set errno on failure. Any thread.

// No link is followed anywhere in the path. Flags are those of open(); O_DIRECTORY, O_NOFOLLOW and O_CLOEXEC are added.
TWDescriptor TWLinuxOpenWithoutLinks(int folder, const char* path, int flags);

// Opens the folder of that name in the given one: no link is followed and no mount point crossed, which fails with
// EXDEV.
TWDescriptor TWLinuxOpenChild(int folder, const char* name, int flags);
