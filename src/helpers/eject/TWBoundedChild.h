#pragma once

#include "TWDeadline.h"

#include <functional>
#include <string>
#include <vector>

// Calls to the system that may hang, as on a server that does not answer, are made in child processes. A child that
// takes too long is killed and left behind if even that does not end it.

struct TWChildEnd {
    bool isInTime = false;
    int status = -1; // -1 if a signal ended it
    std::string output; // the first 4 KiB of its standard output and standard error
};

// The work returns the exit status. It must not use the bus, because the child has only one thread.
TWChildEnd TWRunInChild(const std::function<int()>& work, TWDeadline::Duration limit);

// Runs a program of the system, given its file name and its arguments, with messages in English. Returns what it has
// answered, in one line: "" if it was successful.
std::string TWRunTool(const char* name, const std::vector<std::string>& arguments, TWDeadline::Duration limit);
