#include "editors/TWFilesWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto FileName = "FilesRules.plist";
constexpr auto HelpAnchor = "Files";
constexpr auto VersionBeforeAny = "1.0";
constexpr auto NotARule
    = "The list \"%@\" could not be read (entry %@ is not a Files rule). It is left untouched; please repair it, or "
      "move it away to start anew.";
constexpr auto NoDefaults = "The default rules \"%@\" could not be read. Please install Tidewell again.";
constexpr auto DefaultsTitle = "Are you sure you want to apply the default set of rules?";
constexpr auto DefaultsText = "The current set of rules will be overwritten. This operation is not undoable.";
constexpr auto Yes = "Yes";
constexpr auto No = "No";
constexpr auto NotAppliedTitle = "The default rules could not be applied.";
constexpr auto ChooseTitle = "Select a file or folder";
constexpr auto ChoosePrompt = "Choose";
constexpr auto NotSavedTitle = "The rules could not be saved.";
constexpr auto OK = "OK";

}

TWFilesWindowController::TWFilesWindowController(
    const TWEditorContext& context, const TWDictionaryWindowController& dictionary)
    : context_(context)
    , dictionary_(dictionary)
    , notes_({ context.deletion, context.settings }, [this] {
        if (view_)
            view_->notesChanged();
    })
{
}

void TWFilesWindowController::awakeFromNib(TWLaunchKind kind)
{
    const auto saved = file();
    // A link that leads nowhere is no saved list either.
    if (!context_.deletion.fileSystem.look(saved, TWLinkAtEnd::Follow).isThere()
        && context_.dataFolder.read(saved).missing) {
        loadRules(defaultRules(), Existing::Replace);
    } else {
        problem_ = loadRules(saved, Existing::Replace);
        if (!problem_.empty())
            showDefaultsSwitchedOff();
    }
    auto lastVersion = context_.settings.string(TWKey::LastLaunchedVersion);
    if (lastVersion.empty())
        lastVersion = VersionBeforeAny;
    if (kind == TWLaunchKind::Window && problem_.empty() && lastVersion != context_.bundle.info("CFBundleVersion"))
        loadRules(defaultRules(), Existing::Skip);
}

// Differs on purpose: what stands in the place of a list that cannot be read deletes nothing.
void TWFilesWindowController::showDefaultsSwitchedOff()
{
    loadRules(defaultRules(), Existing::Replace);
    for (auto& each : *filesArray_)
        each.active = false;
}

std::string TWFilesWindowController::loadRules(const std::string& path, Existing existing)
{
    const auto file = context_.dataFolder.read(path);
    std::string problem = file.problem;
    std::optional<std::vector<TWFilesRule>> rules;
    std::size_t badRecord = 0;
    if (file.records && !(rules = TWFilesRule::listFrom(*file.records, badRecord)))
        problem = TWText::fill(NotARule, { path, std::to_string(badRecord) });
    if (rules && existing == Existing::Replace) {
        *filesArray_ = std::move(*rules);
    } else if (rules) {
        for (auto& loaded : *rules) {
            const auto same = [&](const TWFilesRule& each) { return each.filePath == loaded.filePath; };
            if (std::none_of(filesArray_->begin(), filesArray_->end(), same))
                filesArray_->push_back(loaded);
        }
    }
    reloadTable();
    return problem;
}

void TWFilesWindowController::replaceRules(std::vector<TWFilesRule> rules)
{
    *filesArray_ = std::move(rules);
    ruleChanged();
}

void TWFilesWindowController::addRule(TWFilesRule rule)
{
    filesArray_->push_back(std::move(rule));
    ruleChanged();
    if (view_)
        view_->selectRow(static_cast<int>(filesArray_->size()) - 1);
}

void TWFilesWindowController::ok()
{
    const auto problem = write();
    if (view_)
        view_->closeSheet();
    if (!problem.empty())
        context_.alerts.show({ NotSavedTitle, problem, OK, "" }, [](TWAnswer) {});
}

std::string TWFilesWindowController::write()
{
    TWValue::Array records;
    for (const auto& each : *filesArray_)
        records.push_back(each.value());
    auto problem = context_.dataFolder.write(
        FileName, records, problem_.empty() ? TWOldFile::Replace : TWOldFile::KeepAsDamaged);
    if (problem.empty())
        problem_.clear();
    return problem;
}

std::string TWFilesWindowController::file() const
{
    return context_.dataFolder.file(FileName);
}

void TWFilesWindowController::restoreDefaults()
{
    const TWAlert question{ DefaultsTitle, DefaultsText, Yes, No, TWConfirming::LosesSomething };
    context_.alerts.show(question, [this](TWAnswer answer) {
        if (answer != TWAnswer::Default)
            return;
        if (const auto problem = applyDefaults(); !problem.empty())
            context_.alerts.show({ NotAppliedTitle, problem, OK, "" }, [](TWAnswer) {});
    });
}

std::string TWFilesWindowController::applyDefaults()
{
    const auto path = defaultRules();
    // Reading a file that is missing is no problem elsewhere.
    if (!context_.deletion.fileSystem.look(path).isThere() || !loadRules(path, Existing::Replace).empty())
        return TWText::fill(NoDefaults, { path });
    ruleChanged();
    return "";
}

void TWFilesWindowController::add()
{
    if (context_.settings.boolean(TWKey::ManualFilesRuleCreation)) {
        addRule({});
        return;
    }
    if (!view_)
        return;
    view_->choosePath(ChooseTitle, ChoosePrompt, [this](std::optional<std::string> path) {
        if (path)
            addPath(*path);
    });
}

void TWFilesWindowController::addPath(const std::string& path)
{
    addRule(
        { true, std::string(TWPath::lastComponent(path)), context_.deletion.places.abbreviate(path), TWItemItself });
}

void TWFilesWindowController::remove()
{
    if (view_ && view_->selectedRow() != -1)
        removeRule(view_->selectedRow());
}

void TWFilesWindowController::help()
{
    if (view_)
        view_->openHelpAnchor(HelpAnchor);
}

void TWFilesWindowController::reloadTable()
{
    if (view_)
        view_->reloadTable();
}

void TWFilesWindowController::removeRule(int row)
{
    filesArray_->erase(filesArray_->begin() + row);
    ruleChanged();
}

void TWFilesWindowController::insertRule(int row, TWFilesRule rule)
{
    filesArray_->insert(filesArray_->begin() + row, std::move(rule));
    ruleChanged();
}

void TWFilesWindowController::setActive(int row, bool active)
{
    rule(row).active = active;
}

void TWFilesWindowController::setDescription(int row, const std::string& description)
{
    rule(row).description = description;
}

void TWFilesWindowController::setFilePath(int row, const std::string& path)
{
    rule(row).filePath = path;
    countNotes();
}

void TWFilesWindowController::setWhatToDelete(int row, std::int32_t whatToDelete)
{
    rule(row).whatToDelete = whatToDelete;
    countNotes();
}

void TWFilesWindowController::sheetOpened()
{
    notes_.clear();
    sheetIsOpen_ = true;
    countNotes();
}

void TWFilesWindowController::sheetClosed()
{
    sheetIsOpen_ = false;
    counting_.reset();
    notes_.clear();
}

TWRuleNote TWFilesWindowController::note(int row)
{
    return notes_.note(rule(row), dictionary_.wordDictionary());
}

std::string TWFilesWindowController::defaultRules() const
{
    return context_.bundle.resourcePath(FileName);
}

void TWFilesWindowController::ruleChanged()
{
    reloadTable();
    countNotes();
}

void TWFilesWindowController::countNotes()
{
    if (!sheetIsOpen_)
        return;
    // Many edits within one turn begin one count.
    counting_ = context_.deletion.runLoop.after(
        TWRunLoop::Duration(0), [this] { notes_.find(rules(), dictionary_.wordDictionary()); });
}
