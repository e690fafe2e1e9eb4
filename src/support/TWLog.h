#pragma once

#include <functional>
#include <string_view>

// The system log: one line per programming error or broken part of the installation, with the class name as prefix.
// Lines for the user never come here; those go to the results list.
namespace TWLog {

using Sink = std::function<void(std::string_view line)>;

// Any thread. The default sink writes to standard error.
void write(std::string_view line);

// Main thread, before other threads run. An empty sink brings the default one back.
void setSink(Sink sink);

}
