#include "cli/TWFilesCommands.h"

#include "cli/TWJSON.h"
#include "cli/TWRuleCommands.h"
#include "editors/TWFilesWindowController.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto NoSuchKind = "There is no kind of rule \"%@\". The kinds are: %@.\n";
constexpr auto NoRules = "No rules yet. Add one with \"tidewell files add PATH\".\n";
constexpr auto NoPath = "A rule needs the path of a file or folder.\n";

constexpr auto Path = "PATH";
constexpr auto What = "--what";
constexpr auto Description = "--description";
constexpr auto Off = "--off";
constexpr auto PathHelp = "A file or folder; a relative path is taken from the working directory";
constexpr auto WhatHelp = "item (the default), contents, keywords, keywords-deep";
constexpr auto NumberHelp = "The rule's number in \"tidewell files list\"";

// In the order of TWWhatToDelete.
constexpr std::string_view Kinds[] = { "item", "contents", "keywords", "keywords-deep" };
constexpr auto KindNames = "item, contents, keywords, keywords-deep";

constexpr char Group[] = "files";
using Commands = TWRuleCommands<TWFilesWindowController, Group>;

std::string kindName(std::int64_t kind)
{
    return std::string(kind >= 0 && kind < std::ssize(Kinds) ? Kinds[kind] : "nothing");
}

std::string jsonLine(const TWFilesRule& rule)
{
    TWJSON::Object object{ { "Active", rule.active }, { "Description", TWText::validUTF8(rule.description) } };
    TWJSON::addBytes(object, "FilePath", "pathBytes", rule.filePath);
    object["WhatToDelete"] = rule.whatToDelete;
    return TWJSON::line(object);
}

std::string textLine(const TWFilesRule& rule)
{
    std::string kind = kindName(rule.whatToDelete);
    kind.resize(14, ' ');
    return kind + TWText::oneLine(rule.filePath)
        + (rule.description.empty() ? "" : "  (" + TWText::oneLine(rule.description) + ")");
}

TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    return Commands::list(context, invocation, jsonLine, textLine, NoRules);
}

TWCommandResult add(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto what = invocation.has(What) ? invocation.text(What) : std::string(Kinds[TWItemItself]);
    const auto kind = std::find(std::begin(Kinds), std::end(Kinds), what);
    if (kind == std::end(Kinds))
        return TWWrongUse(TWText::fill(NoSuchKind, { TWText::oneLine(what), KindNames }));
    TWMeantPath meant;
    if (const auto refused = TWReadRulePath(context, invocation.text(Path), NoPath, meant))
        return *refused;
    TWFilesRule rule;
    rule.active = !invocation.has(Off);
    rule.description
        = invocation.has(Description) ? invocation.text(Description) : std::string(TWPath::lastComponent(meant.path));
    rule.filePath = meant.stored;
    rule.whatToDelete = kind - std::begin(Kinds);
    return Commands::append(context, rule);
}

}

TWCommandGroup TWFilesCommands()
{
    using enum TWCommandKind;
    using enum TWArgument::Need;
    using Kind = TWArgument::Kind;
    return Commands::group("Show and change the Files rules",
        { { "list", "All rules", Reads, {}, list },
            { "add", "Add a rule at the end", ChangesLists,
                { { Kind::Path, Required, Path, PathHelp }, { Kind::Option, Optional, What, WhatHelp, "KIND" },
                    { Kind::Option, Optional, Description, "The rule's name; the last part of the path if not given",
                        "T" },
                    { Kind::Flag, Optional, Off, "Switched off at first" } },
                add } },
        NumberHelp);
}
