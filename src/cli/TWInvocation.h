#pragma once

#include <optional>
#include <string>
#include <vector>

// A parsed command line.
struct TWInvocation {
    enum class Command { Window, Clean, Settings, Words, Files, Paths, Demo };
    enum class Action { None, List, Get, Set, Reset, Add, Remove, Clear, On, Off, Defaults };

    Command command = Command::Window;
    Action action = Action::None;
    std::optional<std::string> sandbox;
    bool json = false;
    bool yes = false; // warnings count as confirmed
    std::optional<std::vector<int>> only; // positions of cleaners, in place of the switches
    std::string key, value; // of settings
    std::vector<std::string> words;
    std::string path; // of files add, demo; absolute
    std::int64_t whatToDelete = 0;
    std::optional<std::string> description;
    bool off = false;
    int number = 0; // of a list's row, counted from 1

    // A running window carries out these commands, because it holds the lists and settings in memory.
    bool concernsLists() const
    {
        return command == Command::Settings || command == Command::Words || command == Command::Files;
    }
    bool changesLists() const { return concernsLists() && action != Action::List && action != Action::Get; }
};

struct TWParsedInvocation {
    std::optional<TWInvocation> invocation; // nothing if only the following is to be printed
    int status = 0;
    std::string out; // help or version
    std::string err; // one line with the remedy
};

// The words do not include the program's name. Relative paths are relative to workingFolder.
TWParsedInvocation TWParseCommandLine(const std::vector<std::string>& words, const std::string& workingFolder);

// Exit statuses.
namespace TWStatus {
inline constexpr int Success = 0;
inline constexpr int Failure = 1;
inline constexpr int WrongUse = 2;
inline constexpr int NothingRun = 3;
inline constexpr int Interrupted = 130;
}
