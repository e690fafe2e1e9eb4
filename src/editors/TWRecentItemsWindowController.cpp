#include "editors/TWRecentItemsWindowController.h"

#include "cleaners/TWPreferenceFile.h"
#include "cleaners/TWRecentItemsCleaner.h"
#include "support/TWPath.h"

#include <algorithm>

namespace {

constexpr auto FileName = "RecentItemsRules.plist";
constexpr auto HelpAnchor = "RecentItems";

constexpr auto ChooseTitle = "Select an application";
constexpr auto ChooseMessage = "Select the application for which you want to clear recent items.";
constexpr auto ChoosePrompt = "Choose";
constexpr auto BeforeTitle = "Before we begin...";
constexpr auto BeforeText
    = "Please make sure there is at least one recent item listed in the Recent Items menu of %@. If there is none, "
      "open a file with %@, then close %@ and press Continue.";
constexpr auto Continue = "Continue";
constexpr auto FoundTitle = "Found keys for %@";
constexpr auto FoundText
    = "Tidewell has found the following keys in %@'s preference file. Select one or more keys (if any) that you think "
      "contains the recent items that you can see in the application's Recent Items menu, then press Create to create "
      "a new rule. In doubt, it is recommended to backup the preference file before testing the rule.";
constexpr auto NotFoundTitle = "Tidewell did not find recent items for %@.";
constexpr auto NotFoundText
    = "You will need to find the key or file by yourself and enter the information in the row that has been created "
      "for you. It is not recommended to check the Delete File box for the rule at this point because it will result "
      "in the deletion of all of %@'s preferences and in most cases won't remove recent items. Please see the help for "
      "instructions on adding rules manually.";
constexpr auto OK = "OK";

constexpr auto NotComplete = "%@ yet: this rule cleans nothing.";
constexpr auto MakesFail = "%@ yet: this rule cleans nothing, and the cleaner fails.";
constexpr auto NoFile = "No file";
constexpr auto NoKeys = "No keys";
constexpr auto WholeFile = "The whole file would be deleted, with all settings in it";
constexpr auto WarningAndNote = "%@; %@";
constexpr auto NothingThere = "Nothing there now";
constexpr auto NoEntries = "No entries now";
constexpr auto Refused = "Kept or refused: %@";

// In this order. The later ones are those of programs on Linux.
const std::vector<std::string> Keywords{ "RecentItems", "RecentDocuments", "Recent Items", "Recent Documents",
    "DocumentHistory", "Recent", "History", "recent_files", "RecentFiles", "Recent Files", "RecentsMRL", "recents",
    "recentFile", "recentlyUsed" };

// A rule separates keys by commas and trims them, so it would mean others.
bool canBeInRule(const TWFoundKey& found)
{
    const auto& key = found.key;
    return !key.empty() && key.find(',') == key.npos && key.front() != ' ' && key.back() != ' ';
}

TWRuleNote noteFrom(const TWRecentItemsRule& rule, const TWPlanSummary& summary)
{
    if (summary.refused > 0)
        return { TWText::fill(Refused, { summary.objection }), true };
    if (summary.incomplete)
        return { summary.remark, true };
    if (summary.items > 0)
        return { summary.itemsAndSize(), false };
    return { summary.remark.empty() ? (rule.deleteFile ? NothingThere : NoEntries) : NothingThere, false };
}

}

TWRecentItemsWindowController::TWRecentItemsWindowController(
    const TWEditorContext& context, const TWDictionaryWindowController&)
    : TWRulesEditor(context, FileName, HelpAnchor)
    , notes_(context.deletion, [this] { notesChanged(); })
    , finder_(context.deletion.runLoop, context.programs.applications)
{
}

void TWRecentItemsWindowController::add()
{
    if (context().settings.integer(TWKey::ManualRecentItemsRuleCreation) == 1) {
        addRule({});
        return;
    }
    if (!recentItemsView_)
        return;
    recentItemsView_->selectApplication(
        { ChooseTitle, ChooseMessage, ChoosePrompt }, [this](const std::optional<TWApplication>& chosen) {
            if (chosen)
                addApplication(*chosen);
        });
}

void TWRecentItemsWindowController::addApplication(const TWApplication& application)
{
    stopLooking();
    foundAppName_ = application.name.empty() ? application.executable : application.name;
    const auto text = TWText::fill(BeforeText, { foundAppName_, foundAppName_, foundAppName_ });
    TWAlert alert{ BeforeTitle, text, Continue, "" };
    alert.canBeClosed = true;
    context().alerts.show(alert, [this, application](TWAnswer answer) {
        if (answer == TWAnswer::Default)
            look(application);
    });
}

void TWRecentItemsWindowController::addPath(const std::string& path)
{
    addRule({ false, "", context().deletion.places.abbreviate(path), false, "" });
}

void TWRecentItemsWindowController::look(const TWApplication& application)
{
    looking_ = std::make_unique<TWBackgroundStream<Discovery>>(
        context().deletion.runLoop, 1,
        [application, &programs = context().programs, &fileSystem = context().deletion.fileSystem](
            auto& sink) { sink.put(discover(application, programs, fileSystem, sink.cancellation())); },
        [this](const Discovery& found) { discovered(found); }, [] {});
    if (recentItemsView_)
        recentItemsView_->lookingChanged();
}

void TWRecentItemsWindowController::stopLooking()
{
    looking_.reset();
    if (recentItemsView_)
        recentItemsView_->lookingChanged();
}

// The application's own list of recent items is the whole answer. Of its preference files the first one with keys
// counts, or else the first one that can be read.
TWRecentItemsWindowController::Discovery TWRecentItemsWindowController::discover(const TWApplication& application,
    const TWOtherPrograms& programs, const TWFileSystem& fileSystem, const TWCancellation& cancellation)
{
    Discovery found;
    const auto sharedList = programs.applications.sharedFileList(application);
    if (fileSystem.look(sharedList).isThere()) {
        found.sharedList = sharedList;
        return found;
    }
    const auto candidates = programs.applications.preferenceFiles(application);
    for (const auto& path : candidates) {
        const auto real = fileSystem.realPath(path, TWLinkAtEnd::Follow);
        int error = 0;
        const auto folder = real ? fileSystem.holdFolder(std::string(TWPath::parent(*real)), error) : nullptr;
        if (!folder || cancellation.cancelled())
            continue;
        const TWPreferenceFile file(programs.files, fileSystem, *folder, std::string(TWPath::parent(*real)),
            std::string(TWPath::lastComponent(*real)));
        found.keys = file.findKeywords(Keywords);
        std::erase_if(found.keys, [](const auto& key) { return !canBeInRule(key); });
        if (found.preferences.empty() || !found.keys.empty())
            found.preferences = path;
        if (!found.keys.empty())
            return found;
    }
    if (found.preferences.empty() && !candidates.empty())
        found.preferences = candidates.front();
    return found;
}

void TWRecentItemsWindowController::discovered(const Discovery& found)
{
    stopLooking();
    if (!found.sharedList.empty()) {
        addFoundRule(true, true, found.sharedList, "");
        return;
    }
    plistPath_ = found.preferences;
    foundKeysArray_ = found.keys;
    if (foundKeysArray_.empty()) {
        addFoundRule(false, false, plistPath_, "");
        const TWAlert alert{ TWText::fill(NotFoundTitle, { foundAppName_ }),
            TWText::fill(NotFoundText, { foundAppName_ }), OK, "" };
        context().alerts.show(alert, [](TWAnswer) {});
    } else if (recentItemsView_) {
        recentItemsView_->showFoundKeys(
            TWText::fill(FoundTitle, { foundAppName_ }), TWText::fill(FoundText, { foundAppName_ }));
    }
}

void TWRecentItemsWindowController::addFoundRule(
    bool active, bool deleteFile, const std::string& path, const std::string& keys)
{
    addRule({ active, foundAppName_, context().deletion.places.abbreviate(path), deleteFile, keys });
}

void TWRecentItemsWindowController::createFromSelectedKey()
{
    if (!recentItemsView_)
        return;
    std::string keys;
    for (const int row : recentItemsView_->selectedFoundKeys())
        keys += (keys.empty() ? "" : ", ") + foundKeysArray_[static_cast<std::size_t>(row)].key;
    addFoundRule(true, false, plistPath_, keys);
    recentItemsView_->closeFoundKeys();
}

void TWRecentItemsWindowController::showPreferencesFile()
{
    if (recentItemsView_)
        recentItemsView_->showFile(plistPath_);
}

void TWRecentItemsWindowController::setSource(int row, const std::string& source)
{
    edit(row, [&](TWRecentItemsRule& rule) { rule.source = source; });
}

void TWRecentItemsWindowController::setFilePath(int row, const std::string& path)
{
    edit(row, [&](TWRecentItemsRule& rule) { rule.filePath = path; });
    countNotes();
}

void TWRecentItemsWindowController::setDeleteFile(int row, bool deleteFile)
{
    edit(row, [&](TWRecentItemsRule& rule) { rule.deleteFile = deleteFile; });
    countNotes();
}

void TWRecentItemsWindowController::setKeys(int row, const std::string& keys)
{
    edit(row, [&](TWRecentItemsRule& rule) { rule.keys = keys; });
    countNotes();
}

void TWRecentItemsWindowController::sheetClosed()
{
    TWRulesEditor::sheetClosed();
    stopLooking();
    finder_.stop();
}

// What is wrong with a rule, as far as that can be said without a look at the disk, or "".
std::string TWRecentItemsWindowController::mistake(const TWRecentItemsRule& rule)
{
    const bool hasKeys = rule.deleteFile || !rule.keys.empty();
    if (!rule.filePath.empty() && hasKeys)
        return "";
    return TWText::fill(rule.active ? MakesFail : NotComplete, { rule.filePath.empty() ? NoFile : NoKeys });
}

// A path may hold any character but NUL.
std::string TWRecentItemsWindowController::noteKey(const TWRecentItemsRule& rule)
{
    return rule.deleteFile ? rule.filePath : rule.filePath + '\0' + rule.keys;
}

TWRuleNote TWRecentItemsWindowController::note(int row) const
{
    const auto& rule = this->rule(row);
    if (auto text = mistake(rule); !text.empty())
        return { std::move(text), true };
    auto note = notes_.note(noteKey(rule));
    // Whoever has named keys may not have meant the whole file.
    if (rule.active && rule.deleteFile && !rule.keys.empty())
        note = { note.text.empty() ? WholeFile : TWText::fill(WarningAndNote, { WholeFile, note.text }), true };
    return note;
}

void TWRecentItemsWindowController::findNotes()
{
    std::vector<TWRuleNotes::Wanted> wanted;
    for (const auto& rule : rules()) {
        if (!mistake(rule).empty())
            continue;
        wanted.push_back({ noteKey(rule), [this, rule] { return cleaner(rule); },
            [rule](const TWPlanSummary& summary) { return noteFrom(rule, summary); } });
    }
    notes_.find(std::move(wanted));
}

// The program's name is left out, because the note does not say whether it runs.
std::unique_ptr<TWCleaner> TWRecentItemsWindowController::cleaner(TWRecentItemsRule rule) const
{
    rule.active = true;
    rule.source.clear();
    TWRecentItemsCleanerInfo info;
    info.recentItemsArray = std::make_shared<std::vector<TWRecentItemsRule>>(1, std::move(rule));
    auto cleaner = std::make_unique<TWRecentItemsCleaner>(context().cleaners());
    cleaner->setInfo(std::move(info));
    return cleaner;
}
