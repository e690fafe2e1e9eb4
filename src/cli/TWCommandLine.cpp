#include "cli/TWCommandLine.h"

#include "support/TWText.h"

// Debian's CLI11 headers narrow integers. This is the only file that includes them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <CLI/CLI.hpp>
#pragma GCC diagnostic pop

#include <deque>

namespace {

constexpr auto Description = "Tidewell removes traces of your work: it empties the Trash and deletes the files and "
                             "folders that your rules name. It can also quit applications and unmount volumes.";
constexpr auto Footer
    = "Without a command the main window opens. Exit status: 0 all well, 1 a cleaner or a change failed, 2 wrong use, "
      "3 nothing was run, 130 stopped.\nTry it without fear: tidewell demo";
constexpr auto FooterOfCommands = "--sandbox DIR and --json work with every command; see \"tidewell --help\".";
constexpr auto Required = "(required)";
constexpr auto Remedy = "%@ Try \"%@ --help\".\n";
constexpr auto NoSandboxFolder = "--sandbox needs the name of a folder.";
constexpr auto NoWorkingFolder
    = "The current folder has been removed, so \"%@\" is nowhere. Please give the whole path.";
constexpr auto VersionText = "Tidewell 1.0\n";

using Kind = TWArgument::Kind;

// CLI11 splits "[a,b]" into the values a and b. A byte appended that no argument can hold prevents that.
std::string protect(std::string word)
{
    if (word.starts_with('[') && word.ends_with(']'))
        word.push_back('\0');
    return word;
}

std::string unprotect(std::string word)
{
    if (word.ends_with('\0'))
        word.pop_back();
    return word;
}

// What may precede the first slash of a path that is not relative; "" stands for an absolute path. "~name" and "$NAME"
// are ordinary file names.
constexpr std::string_view Beginnings[]
    = { "", "~", "$XDG_CONFIG_HOME", "$XDG_DATA_HOME", "$XDG_STATE_HOME", "$XDG_CACHE_HOME" };

// Throws if the path is relative and the working directory is "".
std::string absolute(const std::string& path, const std::string& workingFolder)
{
    const std::string_view first = std::string_view(path).substr(0, path.find('/'));
    const bool relative = std::find(std::begin(Beginnings), std::end(Beginnings), first) == std::end(Beginnings);
    if (relative && workingFolder.empty())
        throw CLI::ValidationError(TWText::fill(NoWorkingFolder, { path }));
    return relative ? workingFolder + "/" + path : path;
}

// Builds CLI11's description of the command line from the table of commands. CLI11 throws on wrong use; no exception
// leaves this file.
class Parser final {
public:
    Parser()
        : app_(Description, "tidewell")
    {
        app_.footer(Footer);
        app_.get_formatter()->label("REQUIRED", Required);
        app_.fallthrough();
        app_.require_subcommand(0, 1);
        sandboxOption_ = app_.add_option("--sandbox", sandbox_, "Work in a sandbox, whose home folder is DIR/home");
        sandboxOption_->type_name("DIR");
        app_.add_flag("--json", json_, "Print one JSON object per line");
        app_.add_flag("--version", version_, "Print the version");
        for (const auto& group : TWCommandTable())
            addGroup(group);
    }

    void parse(std::vector<std::string> words)
    {
        std::reverse(words.begin(), words.end()); // CLI11 takes them from the back
        std::transform(words.begin(), words.end(), words.begin(), protect);
        app_.parse(std::move(words));
        if (sandboxOption_->count() > 0 && sandbox_.empty())
            throw CLI::ValidationError(NoSandboxFolder);
    }

    // Call this after parse().
    TWInvocation invocation(const std::string& workingFolder) const
    {
        TWInvocation invocation;
        invocation.row = &TWCommandTable().front().rows.front();
        invocation.json = json_;
        if (!sandbox_.empty())
            invocation.sandbox = absolute(unprotect(sandbox_), workingFolder);
        for (const auto& command : commands_) {
            if (!command.app->parsed())
                continue;
            invocation.row = command.row;
            for (const auto& slot : command.slots)
                take(slot, workingFolder, invocation);
        }
        return invocation;
    }

    // The command as far as it was recognised, such as "tidewell files add". Valid after a failed parse(), too.
    std::string command() const
    {
        std::string name = app_.get_name();
        for (auto named = app_.get_subcommands(); !named.empty(); named = named.front()->get_subcommands())
            name += " " + named.front()->get_name();
        return name;
    }

    bool version() const { return version_; }
    const CLI::App& app() const { return app_; }

private:
    // The variables into which CLI11 writes the value of one argument.
    struct Slot {
        const TWArgument* argument;
        const CLI::Option* option = nullptr;
        std::string text{};
        std::vector<std::string> texts{};
    };
    struct Command {
        const TWCommandRow* row;
        const CLI::App* app;
        std::deque<Slot> slots{};
    };

    void addGroup(const TWCommandGroup& group)
    {
        auto* above = &app_;
        if (*group.name) {
            above = app_.add_subcommand(group.name, group.help);
            above->fallthrough();
            above->footer(FooterOfCommands);
            above->require_subcommand(1);
        }
        for (const auto& row : group.rows) {
            if (*row.name)
                addCommand(*above, row);
        }
    }

    void addCommand(CLI::App& above, const TWCommandRow& row)
    {
        auto* app = above.add_subcommand(row.name, row.help);
        app->fallthrough();
        app->footer(FooterOfCommands);
        auto& command = commands_.emplace_back(Command{ &row, app });
        for (const auto& argument : row.arguments)
            addArgument(*app, command.slots.emplace_back(Slot{ &argument }));
    }

    static void addArgument(CLI::App& app, Slot& slot)
    {
        const auto& argument = *slot.argument;
        CLI::Option* option = nullptr;
        if (argument.kind == Kind::Flag)
            option = app.add_flag(argument.name, argument.help);
        else if (argument.kind == Kind::Texts || argument.kind == Kind::OptionList)
            option = app.add_option(argument.name, slot.texts, argument.help);
        else
            option = app.add_option(argument.name, slot.text, argument.help);
        if (argument.kind == Kind::OptionList)
            option->delimiter(',');
        if (argument.kind != Kind::Flag)
            option->type_name(argument.valueName); // "" instead of CLI11's "TEXT"
        option->required(argument.need == TWArgument::Need::Required);
        slot.option = option;
    }

    static void take(const Slot& slot, const std::string& workingFolder, TWInvocation& invocation)
    {
        if (slot.option->count() == 0)
            return;
        const auto kind = slot.argument->kind;
        auto& values = invocation.values[slot.argument->name];
        values = slot.texts;
        if (values.empty() && kind != Kind::Flag)
            values.push_back(slot.text);
        std::transform(values.begin(), values.end(), values.begin(), unprotect);
        if (kind == Kind::Path && !values.front().empty())
            values.front() = absolute(values.front(), workingFolder);
    }

    CLI::App app_;
    CLI::Option* sandboxOption_ = nullptr;
    std::string sandbox_;
    bool json_ = false;
    bool version_ = false;
    std::deque<Command> commands_;
};

TWCommandResult wrongUse(std::string text, const std::string& command)
{
    std::erase(text, '\0');
    text = TWText::oneLine(text);
    if (!text.empty() && text.back() != '.')
        text += ".";
    return TWWrongUse(TWText::fill(Remedy, { text, command }));
}

}

TWParsedCommandLine TWParseCommandLine(const std::vector<std::string>& words, const std::string& workingFolder)
{
    TWParsedCommandLine parsed;
    Parser parser;
    try {
        parser.parse(words);
        if (parser.version())
            parsed.result.out = VersionText;
        else
            parsed.invocation = parser.invocation(workingFolder);
    } catch (const CLI::CallForHelp&) {
        parsed.result.out = parser.app().help(); // the help of the command that was named, if any
    } catch (const CLI::ParseError& error) {
        parsed.result = wrongUse(error.what(), parser.command());
    }
    return parsed;
}
