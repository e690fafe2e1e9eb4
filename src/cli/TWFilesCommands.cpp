#include "cli/TWFilesCommands.h"

#include "cli/TWJSON.h"
#include "cli/TWPathArgument.h"
#include "editors/TWFilesWindowController.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr auto NoSuchKind = "There is no kind of rule \"%@\". The kinds are: %@.\n";
constexpr auto NoSuchRule = "There is no rule %@. Try \"tidewell files list\".\n";
constexpr auto NoRules = "No rules yet. Add one with \"tidewell files add PATH\".\n";
constexpr auto NoPath = "A rule needs the path of a file or folder.\n";
constexpr auto PathNotText
    = "\"%@\" cannot be kept in a rule, because its name is not valid UTF-8. Rename it, or delete it by hand.\n";

constexpr auto Path = "PATH";
constexpr auto What = "--what";
constexpr auto Description = "--description";
constexpr auto Off = "--off";
constexpr auto Number = "N";
constexpr auto PathHelp = "A file or folder; a relative path is taken from the working directory";
constexpr auto WhatHelp = "item (the default), contents, keywords, keywords-deep";
constexpr auto NumberHelp = "The rule's number in \"tidewell files list\"";

// In the order of TWWhatToDelete.
constexpr std::string_view Kinds[] = { "item", "contents", "keywords", "keywords-deep" };
constexpr auto KindNames = "item, contents, keywords, keywords-deep";

std::string kindName(std::int64_t kind)
{
    return std::string(kind >= 0 && kind < std::ssize(Kinds) ? Kinds[kind] : "nothing");
}

TWFilesWindowController& filesOf(const TWCommandContext& context)
{
    return context.delegate->editors().get<TWFilesWindowController>();
}

std::string ruleLine(const TWFilesRule& rule, std::size_t number, bool json)
{
    if (json) {
        TWJSON::Object object{ { "Active", rule.active }, { "Description", TWText::validUTF8(rule.description) } };
        TWJSON::addBytes(object, "FilePath", "pathBytes", rule.filePath);
        object["WhatToDelete"] = rule.whatToDelete;
        return TWJSON::line(object);
    }
    std::string kind = kindName(rule.whatToDelete);
    kind.resize(14, ' ');
    std::string start = std::to_string(number);
    start.resize(4, ' ');
    return start + (rule.active ? "on   " : "off  ") + kind + TWText::oneLine(rule.filePath)
        + (rule.description.empty() ? "" : "  (" + TWText::oneLine(rule.description) + ")") + "\n";
}

TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto rules = filesOf(context).list().saved();
    std::string out;
    for (std::size_t index = 0; index < rules.size(); ++index)
        out += ruleLine(rules[index], index + 1, invocation.json);
    return { TWStatus::Success, out, rules.empty() && !invocation.json ? NoRules : "" };
}

TWCommandResult add(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto given = invocation.text(Path);
    const auto what = invocation.has(What) ? invocation.text(What) : std::string(Kinds[TWItemItself]);
    const auto kind = std::find(std::begin(Kinds), std::end(Kinds), what);
    if (kind == std::end(Kinds))
        return TWWrongUse(TWText::fill(NoSuchKind, { TWText::oneLine(what), KindNames }));
    if (given.empty())
        return TWWrongUse(NoPath);
    const auto meant = TWReadPathArgument(context.host.fileSystem(), context.places, given);
    if (!meant.problem.empty())
        return TWWrongUse(meant.problem);
    // A rule such as "$XDG_DATA_HOME/x" is stored as it is, so that it follows the variable.
    const bool asGiven = !given.starts_with('/') && given.find("/..") == std::string::npos;
    const auto path = asGiven ? TWPath::withoutTrailingSlashes(given) : meant.path;
    if (!TWText::isValidUTF8(path))
        return { TWStatus::Failure, "", TWText::fill(PathNotText, { TWText::oneLine(path) }) };
    TWFilesRule rule;
    rule.active = !invocation.has(Off);
    rule.description
        = invocation.has(Description) ? invocation.text(Description) : std::string(TWPath::lastComponent(path));
    rule.filePath = context.places.abbreviate(path);
    rule.whatToDelete = kind - std::begin(Kinds);
    return TWSaved(*filesOf(context).list().changeSaved([&](auto& rules) {
        rules.push_back(rule);
        return true;
    }));
}

TWCommandResult applyDefaults(const TWCommandContext& context, const TWInvocation&)
{
    auto& files = filesOf(context);
    std::string problem;
    const auto defaults = files.defaultRules(problem);
    if (!defaults)
        return TWSaved(problem);
    return TWSaved(*files.list().changeSaved([&](auto& rules) {
        rules = *defaults;
        return true;
    }));
}

using Rules = std::vector<TWFilesRule>;

// Changes the rule with the given number, counted from 1.
TWCommandResult changeRule(const TWCommandContext& context, const TWInvocation& invocation,
    const std::function<void(Rules&, std::size_t row)>& change)
{
    const auto text = invocation.text(Number);
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    std::optional<std::string> problem;
    if (error == std::errc() && end == text.data() + text.size() && number > 0)
        problem = filesOf(context).list().changeSavedRow(number - 1, change);
    return problem ? TWSaved(*problem) : TWWrongUse(TWText::fill(NoSuchRule, { TWText::oneLine(text) }));
}

TWCommandResult remove(const TWCommandContext& context, const TWInvocation& invocation)
{
    return changeRule(context, invocation,
        [](Rules& rules, std::size_t row) { rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(row)); });
}

TWCommandResult switchOn(const TWCommandContext& context, const TWInvocation& invocation)
{
    return changeRule(context, invocation, [](Rules& rules, std::size_t row) { rules[row].active = true; });
}

TWCommandResult switchOff(const TWCommandContext& context, const TWInvocation& invocation)
{
    return changeRule(context, invocation, [](Rules& rules, std::size_t row) { rules[row].active = false; });
}

}

TWCommandGroup TWFilesCommands()
{
    using enum TWCommandKind;
    using enum TWArgument::Need;
    using Kind = TWArgument::Kind;
    const TWArgument number{ Kind::Text, Required, Number, NumberHelp };
    return { "files", "Show and change the Files rules",
        {
            { "list", "All rules", Reads, {}, list },
            { "defaults", "Replace all rules by the default ones", ChangesLists, {}, applyDefaults },
            { "add", "Add a rule at the end", ChangesLists,
                { { Kind::Path, Required, Path, PathHelp }, { Kind::Option, Optional, What, WhatHelp, "KIND" },
                    { Kind::Option, Optional, Description, "The rule's name; the last part of the path if not given",
                        "T" },
                    { Kind::Flag, Optional, Off, "Switched off at first" } },
                add },
            { "remove", "Remove rule N", ChangesLists, { number }, remove },
            { "on", "Switch rule N on", ChangesLists, { number }, switchOn },
            { "off", "Switch rule N off", ChangesLists, { number }, switchOff },
        } };
}
