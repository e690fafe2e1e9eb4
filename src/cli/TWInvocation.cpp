#include "cli/TWInvocation.h"

#include "app/TWCleanerTable.h"
#include "cleaners/TWFilesRule.h"
#include "support/TWPath.h"
#include "support/TWText.h"

// Debian's CLI11 narrows integers in its headers.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <CLI/CLI.hpp>
#pragma GCC diagnostic pop

#include <string_view>
#include <utility>

namespace {

using Command = TWInvocation::Command;
using Action = TWInvocation::Action;

constexpr auto Description
    = "Tidewell removes traces of your work: it deletes only what a rule, a tick or a drop names.";
constexpr auto Footer
    = "Without a command the main window opens. Exit status: 0 all well, 1 a cleaner or a change failed, 2 wrong use, "
      "3 nothing was run, 130 stopped.\nTry it without fear: tidewell demo";
constexpr auto Remedy = "%@ Try \"tidewell --help\".\n";
constexpr auto NoSuchCleaner = "There is no cleaner \"%@\". The cleaners are: %@.";
constexpr auto LaterCleaner = "The cleaner \"%@\" comes in a later version.";
constexpr auto NoSuchKind = "There is no kind of rule \"%@\". The kinds are: item, contents, keywords, keywords-deep.";
constexpr auto NoSandboxFolder = "--sandbox needs the name of a folder.";
constexpr auto VersionText = "Tidewell 1.0\n";

std::string cleanerNames()
{
    std::string names;
    for (const auto& row : TWCleanerTable())
        names += (names.empty() ? "" : ", ") + std::string(row.name);
    return names;
}

// CLI11 reports a wrong value by throwing; the exception does not leave this file.
int cleanerPosition(const std::string& name)
{
    const int position = TWCleanerPosition(name);
    if (position < 0)
        throw CLI::ValidationError(TWText::fill(NoSuchCleaner, { name, cleanerNames() }));
    if (!TWCleanerTable()[static_cast<std::size_t>(position)].available)
        throw CLI::ValidationError(TWText::fill(LaterCleaner, { name }));
    return position;
}

std::int64_t kindNamed(const std::string& name)
{
    constexpr std::pair<std::string_view, TWWhatToDelete> Kinds[]
        = { { "item", TWItemItself }, { "contents", TWFolderContents }, { "keywords", TWItemsWithKeywords },
              { "keywords-deep", TWItemsWithKeywordsDeep } };
    for (const auto& [known, kind] : Kinds) {
        if (known == name)
            return kind;
    }
    throw CLI::ValidationError(TWText::fill(NoSuchKind, { name }));
}

// CLI11 splits "[a,b]" into the values a and b. Appending a NUL, which no argument can contain, prevents that.
void protect(std::string& word)
{
    if (word.starts_with('[') && word.ends_with(']'))
        word.push_back('\0');
}

void unprotect(std::string& word)
{
    if (word.ends_with('\0'))
        word.pop_back();
}

class Parser {
public:
    explicit Parser(TWInvocation& invocation)
        : invocation_(invocation)
        , app_(Description, "tidewell")
    {
        app_.footer(Footer);
        app_.fallthrough();
        app_.require_subcommand(0, 1);
        app_.add_option("--sandbox", sandbox_, "Put the whole world of a run under this folder")->type_name("DIR");
        app_.add_flag("--json", invocation.json, "Print one JSON object per line");
        app_.add_flag("--version", version_, "Print the version");
        addClean();
        addSettings();
        addWords();
        addFiles();
        command(app_, "paths", "Print where everything is", Command::Paths, Action::None);
        auto* demo = command(
            app_, "demo", "Make a sandbox with sample traces, clean it, show the results", Command::Demo, Action::None);
        demo->add_option("DIR", invocation.path, "A new or empty folder; else one is made");
    }

    void parse(std::vector<std::string> words)
    {
        std::reverse(words.begin(), words.end()); // CLI11 takes them from the back
        for (auto& word : words)
            protect(word);
        app_.parse(std::move(words));
        for (auto* text : { &sandbox_, &description_, &what_, &invocation_.path, &invocation_.key, &invocation_.value })
            unprotect(*text);
        for (auto* list : { &invocation_.words, &only_ })
            std::for_each(list->begin(), list->end(), unprotect);
        if (app_.count("--sandbox") > 0) {
            // An empty shell variable must not lead out into the real home.
            if (sandbox_.empty())
                throw CLI::ValidationError(NoSandboxFolder);
            invocation_.sandbox = sandbox_;
        }
        if (!description_.empty())
            invocation_.description = description_;
        invocation_.whatToDelete = kindNamed(what_);
        if (!only_.empty()) {
            invocation_.only.emplace();
            for (const auto& name : only_)
                invocation_.only->push_back(cleanerPosition(name));
        }
    }

    bool version() const { return version_; }
    const CLI::App& app() const { return app_; }

private:
    CLI::App* command(CLI::App& above, const char* name, const char* text, Command command, Action action)
    {
        auto* sub = above.add_subcommand(name, text);
        sub->fallthrough();
        sub->callback([this, command, action] {
            invocation_.command = command;
            if (action != Action::None)
                invocation_.action = action;
        });
        return sub;
    }

    CLI::App* group(const char* name, const char* text, Command which)
    {
        auto* sub = command(app_, name, text, which, Action::None);
        sub->require_subcommand(1);
        return sub;
    }

    void addClean()
    {
        auto* clean = command(app_, "clean", "Run the cleaners that are switched on", Command::Clean, Action::None);
        clean->add_option("--only", only_, "Run these cleaners instead: " + cleanerNames())
            ->delimiter(',')
            ->type_name("A,B");
        clean->add_flag("--yes", invocation_.yes, "Do not ask when a cleaner warns");
    }

    void addSettings()
    {
        auto* settings = group("settings", "Show and change settings", Command::Settings);
        command(*settings, "list", "All settings with their values", Command::Settings, Action::List);
        for (const auto& [name, text, action] : { std::tuple{ "get", "Print one value", Action::Get },
                 { "set", "Change one value", Action::Set }, { "reset", "Back to the default", Action::Reset } }) {
            auto* sub = command(*settings, name, text, Command::Settings, action);
            sub->add_option("KEY", invocation_.key)->required();
            if (action == Action::Set)
                sub->add_option("VALUE", invocation_.value)->required();
        }
    }

    void addWords()
    {
        auto* words = group("words", "Show and change the keyword dictionary", Command::Words);
        command(*words, "list", "All words", Command::Words, Action::List);
        command(*words, "clear", "Remove all words", Command::Words, Action::Clear);
        auto* add = command(*words, "add", "Add words at the end", Command::Words, Action::Add);
        auto* remove
            = command(*words, "remove", "Remove words, each wherever it stands", Command::Words, Action::Remove);
        for (auto* sub : { add, remove })
            sub->add_option("WORD", invocation_.words)->required();
    }

    void addFiles()
    {
        auto* files = group("files", "Show and change the Files rules", Command::Files);
        command(*files, "list", "All rules", Command::Files, Action::List);
        command(*files, "defaults", "Replace all rules by the default ones", Command::Files, Action::Defaults);
        auto* add = command(*files, "add", "Add a rule at the end", Command::Files, Action::Add);
        add->add_option("PATH", invocation_.path)->required();
        add->add_option("--what", what_, "item, contents, keywords, keywords-deep")->type_name("KIND");
        add->add_option("--description", description_, "The rule's name")->type_name("T");
        add->add_flag("--off", invocation_.off, "Switched off at first");
        for (const auto& [name, text, action] : { std::tuple{ "remove", "Remove rule N", Action::Remove },
                 { "on", "Switch rule N on", Action::On }, { "off", "Switch rule N off", Action::Off } }) {
            command(*files, name, text, Command::Files, action)
                ->add_option("N", invocation_.number, "Counted from 1")
                ->required();
        }
    }

    TWInvocation& invocation_;
    CLI::App app_;
    std::string sandbox_;
    std::string description_;
    std::string what_ = "item";
    std::vector<std::string> only_;
    bool version_ = false;
};

// What may be in front of the first slash of an absolute path: nothing, or one of these. "~name" and any other "$NAME"
// are ordinary file names.
constexpr std::string_view Beginnings[]
    = { "", "~", "$XDG_CONFIG_HOME", "$XDG_DATA_HOME", "$XDG_STATE_HOME", "$XDG_CACHE_HOME" };

void makeAbsolute(std::string& path, const std::string& workingFolder)
{
    const std::string_view first = std::string_view(path).substr(0, path.find('/'));
    if (std::find(std::begin(Beginnings), std::end(Beginnings), first) == std::end(Beginnings))
        path = TWPath::standardize(workingFolder + "/" + path, "");
}

}

TWParsedInvocation TWParseCommandLine(const std::vector<std::string>& words, const std::string& workingFolder)
{
    TWParsedInvocation result;
    TWInvocation invocation;
    Parser parser(invocation);
    try {
        parser.parse(words);
    } catch (const CLI::CallForHelp&) {
        // This is the help of the subcommand, if one was given.
        result.out = parser.app().help();
        return result;
    } catch (const CLI::ParseError& error) {
        result.status = TWStatus::WrongUse;
        std::string text = error.what();
        std::erase(text, '\0');
        text = TWText::oneLine(text);
        if (!text.empty() && text.back() != '.')
            text += ".";
        result.err = TWText::fill(Remedy, { text });
        return result;
    }
    if (parser.version()) {
        result.out = VersionText;
        return result;
    }
    makeAbsolute(invocation.path, workingFolder);
    if (invocation.sandbox)
        makeAbsolute(*invocation.sandbox, workingFolder);
    result.invocation = std::move(invocation);
    return result;
}
