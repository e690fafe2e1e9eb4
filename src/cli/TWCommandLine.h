#pragma once

#include "cli/TWCommandTable.h"

struct TWParsedCommandLine {
    std::optional<TWInvocation> invocation; // nothing if there is nothing left to do but to print this:
    TWCommandResult result; // help, the version, or one line with the remedy
};

// words without the program's name. Relative paths are taken from workingFolder and may still hold "..".
TWParsedCommandLine TWParseCommandLine(const std::vector<std::string>& words, const std::string& workingFolder);
