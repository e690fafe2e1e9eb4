#pragma once

#include "cli/TWCommandContext.h"
#include "cli/TWInvocation.h"

#include <span>

// One argument of a command.
struct TWArgument {
    enum class Kind {
        Text, // KEY
        Path, // PATH: a text; a relative path is taken from the working directory
        Texts, // WORD...: one or more
        Option, // --what KIND
        OptionList, // --only A,B
        Flag, // --yes
    };
    enum class Need { Optional, Required };

    Kind kind = Kind::Text;
    Need need = Need::Optional;
    const char* name = ""; // key in TWInvocation::values
    std::string help{};
    const char* valueName = ""; // name of an option's value in the help
};

// What a program does before it runs the command.
enum class TWCommandKind {
    OpensWindow,
    NeedsPlaces, // nothing
    Reads, // loads settings and lists
    ChangesLists, // hands it to a running window, else loads settings and lists while holding their lock
    Cleans, // or previews: loads settings and lists; SIGINT, SIGTERM and SIGHUP become events
    CleansNewSandbox, // the same in a new sandbox, whose folder is the first argument
};

// One command. To add one, add such a row and its function to the file of its group.
struct TWCommandRow {
    const char* name;
    const char* help;
    TWCommandKind kind;
    std::vector<TWArgument> arguments;
    TWCommandResult (*run)(const TWCommandContext&, const TWInvocation&);
};

struct TWCommandGroup {
    const char* name; // "" if its commands are used without a group name
    const char* help;
    std::vector<TWCommandRow> rows;
};

// All commands, in the order of the help. The first one is used if `tidewell` is called without a command.
std::span<const TWCommandGroup> TWCommandTable();
