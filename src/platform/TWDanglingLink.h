#pragma once

#include "platform/TWFileSystem.h"

// True if the path or a folder above it is a dangling symbolic link, for example to a stick that is not plugged in.
// Then nobody can tell whether there is something at the path. The path is absolute. Any thread.
bool TWIsBehindDanglingLink(const TWFileSystem&, std::string path);
