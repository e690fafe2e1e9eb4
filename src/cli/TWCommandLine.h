#pragma once

#include "cli/TWCommandTable.h"

struct TWParsedCommandLine {
    std::optional<TWInvocation> invocation; // nothing if only the result is to be printed
    TWCommandResult result; // help, the version, or one line with the remedy
};

// The words do not include the program's name. Relative paths are prefixed with workingFolder and may still hold "..".
TWParsedCommandLine TWParseCommandLine(const std::vector<std::string>& words, const std::string& workingFolder);
