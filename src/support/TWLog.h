#pragma once

#include <functional>
#include <string_view>

// The log of programming errors and of broken parts of the installation: one line each, with the class name as prefix.
// Lines for the user do not belong here; they go to the results list.
namespace TWLog {

using Sink = std::function<void(std::string_view line)>;

// Any thread. The default sink writes to standard error and makes the line safe for a terminal.
void write(std::string_view line);

// Main thread, before other threads run. An empty sink restores the default one.
void setSink(Sink sink);

}
