#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWPlaces.h"

// What a path on the command line means.
struct TWMeantPath {
    std::string path; // absolute, without "." and "..", links not resolved
    std::string problem; // one line if the path could mean two things, else ""
};

// The path is absolute or begins with "~" or one of the XDG variables. The shell, and every tool, lets ".." lead to the
// folder that really lies above; where it follows a link, that is another one than the text says.
TWMeantPath TWReadPathArgument(const TWFileSystem&, const TWPlaces&, const std::string& path);
