#pragma once

#include <initializer_list>
#include <string_view>

// Writes one line to standard error, "eject: TEXT", in which file names can do no harm. Each "%@" of the format is
// replaced by the next value.
void TWReport(std::string_view format, std::initializer_list<std::string_view> values);
