#include "cli/TWRecentItemsCommands.h"

#include "cli/TWJSON.h"
#include "cli/TWRuleCommands.h"
#include "editors/TWRecentItemsWindowController.h"

namespace {

constexpr auto NoRules = "No rules yet. Add one with \"tidewell recent-items add FILE --source NAME --keys A,B\".\n";
constexpr auto NoPath = "A rule needs the path of a file.\n";
constexpr auto KeysOrFile = "A rule needs either --keys or --delete-file.\n";

constexpr auto File = "FILE";
constexpr auto Source = "--source";
constexpr auto Keys = "--keys";
constexpr auto DeleteFile = "--delete-file";
constexpr auto Off = "--off";
constexpr auto FileHelp = "The program's preference file; one folder in it may be \"*\", for any folder";
constexpr auto SourceHelp = "The program's name";
constexpr auto KeysHelp = "The entries to remove: names, separated by commas";
constexpr auto NumberHelp = "The rule's number in \"tidewell recent-items list\"";

constexpr char Group[] = "recent-items";
using Commands = TWRuleCommands<TWRecentItemsWindowController, Group>;

std::string jsonLine(const TWRecentItemsRule& rule)
{
    TWJSON::Object object{ { "Active", rule.active }, { "Source", TWText::validUTF8(rule.source) } };
    TWJSON::addBytes(object, "FilePath", "pathBytes", rule.filePath);
    object["DeleteFile"] = rule.deleteFile;
    object["Keys"] = TWText::validUTF8(rule.keys);
    return TWJSON::line(object);
}

std::string textLine(const TWRecentItemsRule& rule)
{
    const auto what = rule.deleteFile ? "whole file" : "keys " + TWText::oneLine(rule.keys);
    return TWText::oneLine(rule.filePath) + "  " + what
        + (rule.source.empty() ? "" : "  (" + TWText::oneLine(rule.source) + ")");
}

TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    return Commands::list(context, invocation, jsonLine, textLine, NoRules);
}

TWCommandResult add(const TWCommandContext& context, const TWInvocation& invocation)
{
    if (invocation.text(Keys).empty() != invocation.has(DeleteFile))
        return TWWrongUse(KeysOrFile);
    TWMeantPath meant;
    if (const auto refused = TWReadRulePath(context, invocation.text(File), NoPath, meant))
        return *refused;
    TWRecentItemsRule rule;
    rule.active = !invocation.has(Off);
    rule.source = invocation.text(Source);
    rule.filePath = meant.stored;
    rule.deleteFile = invocation.has(DeleteFile);
    rule.keys = invocation.text(Keys);
    return Commands::append(context, rule);
}

}

TWCommandGroup TWRecentItemsCommands()
{
    using enum TWCommandKind;
    using enum TWArgument::Need;
    using Kind = TWArgument::Kind;
    return Commands::group("Show and change the Recent Items rules",
        { { "list", "All rules", Reads, {}, list },
            { "add", "Add a rule at the end", ChangesLists,
                { { Kind::Path, Required, File, FileHelp }, { Kind::Option, Required, Source, SourceHelp, "NAME" },
                    { Kind::Option, Optional, Keys, KeysHelp, "A,B" },
                    { Kind::Flag, Optional, DeleteFile, "Delete the whole file" },
                    { Kind::Flag, Optional, Off, "Switched off at first" } },
                add } },
        NumberHelp);
}
