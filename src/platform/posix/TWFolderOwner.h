#pragma once

#include <string>

// When root makes a file or a folder in somebody else's folder, as in `sudo tidewell`, gives it to the owner of that
// folder, who would be locked out of it otherwise. Does nothing for other users. Returns 0 or the errno.
int TWGiveToFolderOwner(int descriptor, const std::string& folder);
