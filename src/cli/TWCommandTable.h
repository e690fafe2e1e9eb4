#pragma once

#include "cli/TWCommandContext.h"
#include "cli/TWInvocation.h"

#include <span>

// One argument of a command.
struct TWArgument {
    enum class Kind {
        Text, // KEY
        Path, // PATH: a text; a relative one is taken from the working folder
        Texts, // WORD...: one or more
        Option, // --what KIND
        OptionList, // --only A,B
        Flag, // --yes
    };
    enum class Need { Optional, Required };

    Kind kind = Kind::Text;
    Need need = Need::Optional;
    const char* name = ""; // as in TWInvocation::values
    std::string help{};
    const char* valueName = ""; // of an option, in its help
};

// What a program does before it runs the command.
enum class TWCommandKind {
    OpensWindow,
    NeedsPlaces, // nothing
    Reads, // loads settings and lists
    ChangesLists, // hands it to a running window; otherwise loads settings and lists under their lock
    Cleans, // loads settings and lists; a request to end the program becomes an event
    CleansNewSandbox, // the same, in a new sandbox; the first argument names its folder
};

// One command. Adding one is adding such a row, and its function, to the file of its group.
struct TWCommandRow {
    const char* name;
    const char* help;
    TWCommandKind kind;
    std::vector<TWArgument> arguments;
    TWCommandResult (*run)(const TWCommandContext&, const TWInvocation&);
};

struct TWCommandGroup {
    const char* name; // "" if its commands are called without a group
    const char* help;
    std::vector<TWCommandRow> rows;
};

// All commands, in the order of the help. The first one is what `tidewell` means without a command.
std::span<const TWCommandGroup> TWCommandTable();
