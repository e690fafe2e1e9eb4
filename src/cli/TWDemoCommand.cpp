#include "cli/TWDemoCommand.h"

#include "cli/TWCleanCommand.h"
#include "cli/TWTerminal.h"
#include "editors/TWFilesWindowController.h"
#include "editors/TWLogsWindowController.h"
#include "support/TWPath.h"
#include "support/TWText.h"

namespace {

constexpr auto NotWritten = "The demonstration could not write \"%@\" (%@). Please choose another folder.\n";
constexpr auto Beginning
    = "Tidewell makes a world of its own under %@ and cleans it. Nothing outside of it is touched.\n\n";
constexpr auto Ending = "\nHave a look at what is left: find %@/home. Delete the folder when you like.\n";

constexpr auto Contents = "A sample file of the demonstration.\n";
constexpr std::string_view TrashedFiles[]
    = { "old invoice.pdf", "holiday photo.jpg", "draft.odt", "notes/monday.txt", "notes/tuesday.txt" };
constexpr std::string_view OtherFiles[] = { ".cache/thumbnails/normal/3f2a.png", ".cache/thumbnails/large/9c1d.png",
    "Documents/Secret plan.txt", "Documents/letters/to the bank.txt", "Documents/letters/secret santa.txt",
    "Documents/recipe.txt", "Pictures/cat.jpg", ".local/state/log/backup/monday.log",
    ".local/state/log/backup/tuesday.log", ".local/state/log/sync.log" };
constexpr auto CheckedLogs = "/log/backup"; // in the folder for states

// Those that find something in the sandbox.
constexpr TWKey Cleaners[]
    = { TWKey::RecentItemsCleaner, TWKey::TrashCleaner, TWKey::FilesCleaner, TWKey::LogsCleaner };

constexpr auto Record = "[Trash Info]\nPath=Documents/%@\nDeletionDate=2026-01-02T03:04:05\n";

// Returns "" or one line that names the file and the remedy.
std::string writeFile(const TWOwnFiles& ownFiles, const std::string& path, std::string_view contents)
{
    int error = ownFiles.makeFolders(std::string(TWPath::parent(path)));
    if (error == 0)
        error = ownFiles.writeAtomically(path, contents);
    return error == 0 ? "" : TWText::fill(NotWritten, { TWText::oneLine(path), TWErrorText(error) });
}

std::string writeTraces(const TWOwnFiles& ownFiles, const TWPlaces& places)
{
    std::string problem;
    for (const auto file : TrashedFiles) {
        const std::string item(file.substr(0, file.find('/')));
        if (problem.empty())
            problem = writeFile(ownFiles, places.trash + "/files/" + std::string(file), Contents);
        if (problem.empty())
            problem
                = writeFile(ownFiles, places.trash + "/info/" + item + ".trashinfo", TWText::fill(Record, { item }));
    }
    for (const auto file : OtherFiles) {
        if (problem.empty())
            problem = writeFile(ownFiles, places.home + "/" + std::string(file), Contents);
    }
    return problem;
}

template <typename Record>
std::string replace(TWRecordList<Record>& list, const std::vector<Record>& records)
{
    return *list.changeSaved([&](auto& saved) {
        saved = records;
        return true;
    });
}

std::string checkLogs(const TWCommandContext& context)
{
    const auto& places = context.places;
    const TWLogRoots roots(places, context.host.logSources().userSources(places));
    TWLogsTree tree(places.abbreviate(places.systemLogs));
    tree.click(tree.add(roots, places, places.stateHome + CheckedLogs, true), TWLogChecked);
    return replace(context.delegate->editors().get<TWLogsWindowController>().list(), tree.cleanedArrayFrom());
}

// Returns "" or one line about what could not be saved.
std::string writeLists(const TWCommandContext& context)
{
    auto& delegate = *context.delegate;
    auto& files = delegate.editors().get<TWFilesWindowController>();
    const std::vector<TWFilesRule> rules{
        { true, "Thumbnails of pictures", "~/.cache/thumbnails", TWItemItself },
        { true, "Documents named with a word of the dictionary", "~/Documents", TWItemsWithKeywordsDeep },
        { false, "Pictures (switched off, so they stay)", "~/Pictures", TWFolderContents },
    };
    auto& dictionary = delegate.editors().dictionary();
    for (const auto key : Cleaners)
        delegate.settings().set(key, true);
    auto problem = replace(files.list(), rules);
    if (problem.empty())
        problem = replace(dictionary.list(), std::vector<TWDictionaryWord>{ { "secret" }, { "bank" } });
    if (problem.empty())
        problem = checkLogs(context);
    if (problem.empty())
        problem = delegate.settings().userDefaults().synchronize();
    return problem.empty() ? "" : TWText::oneLine(problem) + "\n";
}

TWCommandResult demonstrate(const TWCommandContext& context, const TWInvocation&)
{
    auto problem = writeTraces(context.host.ownFiles(), context.places);
    if (problem.empty())
        problem = writeLists(context);
    if (!problem.empty())
        return { TWStatus::Failure, "", problem };
    const bool talks = context.terminal->format() == TWOutputFormat::Lines;
    const auto root = TWText::oneLine(context.places.sandboxRoot);
    if (talks)
        TWWriteToOutput(TWText::fill(Beginning, { root }));
    auto result = TWRunCleaners(context, context.delegate->switchedOn());
    if (talks)
        result.out = TWText::fill(Ending, { root });
    return result;
}

}

TWCommandGroup TWDemoCommands()
{
    const TWArgument folder{ TWArgument::Kind::Path, TWArgument::Need::Optional, "DIR",
        "A new or empty folder; else one is made" };
    return { "", "",
        { { "demo", "Make a sandbox with sample traces, clean it, show the results", TWCommandKind::CleansNewSandbox,
            { folder }, demonstrate } } };
}
