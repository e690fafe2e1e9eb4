#pragma once

#include <string>

// Gives a new file or folder to the owner of the folder it is in if root has created it, as in `sudo tidewell`;
// otherwise that user would be locked out of it. Does nothing if this process is not root. Returns 0 or the errno.
int TWGiveToFolderOwner(int descriptor, const std::string& folder);
