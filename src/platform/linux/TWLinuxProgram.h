#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Which program a command line means. Nothing here touches the file system. Any thread.
namespace TWLinuxProgram {

// Splits a command as a shell does, without expanding anything. Nothing if a quotation mark is not closed.
std::vector<std::string> words(const std::string& command);

// The program or script, as the command names it, that runs in the end: behind env and its variables, nice, pkexec and
// the like, "flatpak run" and "snap run", after "sh -c" or an interpreter. "" if there is none.
std::string startedBy(std::vector<std::string> words);

// The script that this interpreter runs, given the words of its command line; "" if it runs none or is not an
// interpreter.
std::string script(std::string_view interpreter, const std::vector<std::string>& words);

// What the command hands to the program that startedBy() finds in it, without the field codes of a .desktop file.
// Nothing if the command does not name that program directly.
std::optional<std::vector<std::string>> arguments(const std::vector<std::string>& words);

bool isShell(std::string_view fileName);

// True for interpreters and for programs that only start others, under whose name many applications run.
bool isLauncher(std::string_view fileName);

// The file name without the ending of a script or of a program behind a wrapper: "soffice" for "soffice.bin".
std::string_view stem(std::string_view fileName);

}
