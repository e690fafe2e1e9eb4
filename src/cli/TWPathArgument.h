#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWPlaces.h"

// The meaning of a path on the command line.
struct TWMeantPath {
    std::string path; // absolute, without "." and ".."; symbolic links are not resolved
    std::string stored; // for a rule: beginning with "~" or the variable it was given with, so that it follows both
    std::string problem; // one line if the path is ambiguous, else ""
};

// The path is absolute or begins with "~" or an XDG variable. It is ambiguous if a ".." follows a symbolic link: for
// the kernel ".." is then the parent of the link's target, not the folder that the text suggests.
// The same goes for a folder such as "~/.cache" that an XDG variable has moved.
TWMeantPath TWReadPathArgument(const TWFileSystem&, const TWPlaces&, const std::string& path);
