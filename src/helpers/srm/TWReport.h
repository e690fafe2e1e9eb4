#pragma once

#include <string>

// Writes "srm: subject: text" to standard error as one line, also when the subject is a file name with a line break in
// it.
void report(const std::string& subject, const char* text);
