#include "cli/TWKeepCommands.h"

#include "cli/TWJSON.h"
#include "cli/TWListArguments.h"
#include "editors/TWKeepWindowController.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto NoEntries = "The keep list is empty. Add an entry with \"tidewell keep add PATH\".\n";
constexpr auto PathOrPattern = "Give either a path or a name with --pattern.\n";
constexpr auto InsidePattern
    = "--inside goes with a path; what has a kept name is always kept with everything in it.\n";
constexpr auto HasMistake = "The entry %@.\n";
constexpr auto NoSuchEntry = "There is no entry %@. Try \"tidewell keep list\".\n";

constexpr auto KeptNames = "Kept: everything with a name like \"%@\".";
constexpr auto KeptInside = "Kept: \"%@\" with everything in it.";
constexpr auto KeptItem = "Kept: \"%@\".";
constexpr auto KeptFolder
    = "Kept: \"%@\" itself. What is in it can still be deleted; add it with --inside to keep that too.";
constexpr auto MissingNow = " It does not exist now.";

constexpr auto PathName = "PATH";
constexpr auto InsideName = "--inside";
constexpr auto PatternName = "--pattern";
constexpr auto Number = "N";
constexpr auto PathHelp = "A file or folder; a relative path is taken from the working directory";
constexpr auto InsideHelp = "Keep the folder with everything in it";
constexpr auto PatternHelp = "Keep everything with such a name instead: \"*\" any text, \"?\" any byte, \"[a-z]\" a "
                             "byte of a range, \"[!a-z]\" any other";
constexpr auto NumberHelp = "The entry's number in \"tidewell keep list\"";

using Kind = TWKeepEntry::Kind;
using Records = std::vector<TWKeepRecord>;

TWKeepWindowController& editorOf(const TWCommandContext& context)
{
    return context.delegate->editors().get<TWKeepWindowController>();
}

std::string jsonLine(const TWKeepEntry& entry)
{
    TWJSON::Object object;
    if (entry.kind == Kind::Names) {
        object["Pattern"] = entry.text;
    } else {
        object["Path"] = entry.text;
        object["Inside"] = entry.kind == Kind::FolderWithContents;
    }
    return TWJSON::line(object);
}

std::string entryLine(const TWKeepEntry& entry, std::size_t number)
{
    static constexpr const char* Kinds[] = { "path     ", "inside   ", "pattern  " };
    std::string start = std::to_string(number);
    start.resize(std::max<std::size_t>(4, start.size() + 1), ' ');
    return start + Kinds[static_cast<std::size_t>(entry.kind)] + TWText::oneLine(entry.text) + "\n";
}

TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    // The defaults that stand in for a damaged list are not in force. What is wrong is said for every command.
    if (!editorOf(context).problem().empty())
        return { TWStatus::Failure, "", "" };
    const auto& records = editorOf(context).entries();
    std::string out;
    for (std::size_t index = 0; index < records.size(); ++index) {
        const auto& entry = records[index].entry();
        out += invocation.json ? jsonLine(entry) : entryLine(entry, index + 1);
    }
    return { TWStatus::Success, out, records.empty() && !invocation.json ? NoEntries : "" };
}

// Returns "" or one line about what is wrong with the path.
std::string readPath(const TWCommandContext& context, const std::string& given, TWKeepEntry& entry)
{
    const auto meant = TWReadPathArgument(context.host.fileSystem(), context.places, given);
    entry.text = meant.stored;
    return meant.problem;
}

std::string addedText(const TWCommandContext& context, const TWKeepEntry& entry)
{
    const auto shown = TWText::oneLine(entry.text);
    if (entry.kind == Kind::Names)
        return TWText::fill(KeptNames, { shown });
    const auto look = context.host.fileSystem().look(context.places.standardize(entry.text));
    const auto missing = look.presence == TWPresence::Gone ? MissingNow : "";
    if (entry.kind == Kind::FolderWithContents)
        return TWText::fill(KeptInside, { shown }) + missing;
    return TWText::fill(look.isFolder() ? KeptFolder : KeptItem, { shown }) + missing;
}

TWCommandResult add(const TWCommandContext& context, const TWInvocation& invocation)
{
    const bool isPattern = invocation.has(PatternName);
    if (isPattern == invocation.has(PathName))
        return TWWrongUse(PathOrPattern);
    if (isPattern && invocation.has(InsideName))
        return TWWrongUse(InsidePattern);
    TWKeepEntry entry{ Kind::Names, invocation.text(PatternName) };
    if (!isPattern) {
        entry.kind = invocation.has(InsideName) ? Kind::FolderWithContents : Kind::Path;
        if (const auto problem = readPath(context, invocation.text(PathName), entry); !problem.empty())
            return TWWrongUse(problem);
    }
    if (const auto mistake = entry.mistake(); !mistake.empty())
        return TWWrongUse(TWText::fill(HasMistake, { mistake }));
    if (const auto doubt = entry.doubt(); !doubt.empty())
        return TWWrongUse(TWText::fill(HasMistake, { doubt }));
    auto result = TWSaved(editorOf(context).save(entry));
    if (result.status == TWStatus::Success && !invocation.json)
        result.out = addedText(context, entry) + "\n";
    return result;
}

TWCommandResult remove(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto text = invocation.text(Number);
    std::optional<std::string> problem;
    if (const auto number = TWReadNumber(text))
        problem = editorOf(context).list().changeSavedRow(*number - 1, [](Records& records, std::size_t row) {
            records.erase(records.begin() + static_cast<std::ptrdiff_t>(row));
        });
    return problem ? TWSaved(*problem) : TWWrongUse(TWText::fill(NoSuchEntry, { TWText::oneLine(text) }));
}

}

TWCommandGroup TWKeepCommands()
{
    using enum TWCommandKind;
    using enum TWArgument::Need;
    using Argument = TWArgument::Kind;
    return { "keep", "Show and change the list of what is never deleted",
        {
            { "list", "All entries", Reads, {}, list },
            { "add", "Add an entry at the end", ChangesLists,
                { { Argument::Path, Optional, PathName, PathHelp },
                    { Argument::Flag, Optional, InsideName, InsideHelp },
                    { Argument::Option, Optional, PatternName, PatternHelp, "NAME" } },
                add },
            { "remove", "Remove entry N", ChangesLists, { { Argument::Text, Required, Number, NumberHelp } }, remove },
        } };
}
