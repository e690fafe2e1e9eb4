#pragma once

#include "platform/TWFileSystem.h"

// Copies a file that could not be understood to PATH.damaged, before it is written over. An earlier damaged file stays
// as it was: the next one gets a number. kept is the name of the copy. 0, or the errno.
int TWKeepDamagedFile(const TWFileSystem&, const std::string& path, std::string& kept);
