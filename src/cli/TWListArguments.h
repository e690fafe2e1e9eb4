#pragma once

#include "cli/TWCommandTable.h"
#include "cli/TWPathArgument.h"

// Arguments of the commands that change a list.

// The number of a record, counted from 1; nothing if the text is no such number.
std::optional<std::size_t> TWReadNumber(const std::string& text);

// The path that a rule is to hold. If a rule cannot hold it, returns what the command answers; noPath is for "".
std::optional<TWCommandResult> TWReadRulePath(
    const TWCommandContext&, const std::string& given, const char* noPath, TWMeantPath& meant);
