#include "editors/TWFilesWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "support/TWPath.h"
#include "support/TWText.h"

namespace {

constexpr auto FileName = "FilesRules.plist";
constexpr auto HelpAnchor = "Files";
constexpr auto VersionBeforeAny = "1.0";
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
    , list_(context.dataFolder, FileName, [this](TWListState state, const auto&) { return rulesInstead(state); })
    , notes_({ context.deletion, context.settings }, [this] {
        if (view_)
            view_->notesChanged();
    })
{
    list_.setChanged([this] { ruleChanged(); });
}

void TWFilesWindowController::awakeFromNib(TWLaunchKind kind)
{
    list_.load();
    auto lastVersion = context_.settings.string(TWKey::LastLaunchedVersion);
    if (lastVersion.empty())
        lastVersion = VersionBeforeAny;
    if (kind == TWLaunchKind::Window && problem().empty() && lastVersion != context_.bundle.info("CFBundleVersion"))
        loadRules(defaultsPath(), Existing::Skip);
}

// Differs on purpose: the rules shown in place of a list that cannot be read are switched off, so they delete nothing.
std::vector<TWFilesRule> TWFilesWindowController::rulesInstead(TWListState state) const
{
    auto rules = list_.read(defaultsPath()).records;
    for (auto& each : rules)
        each.active = each.active && state == TWListState::Missing;
    return rules;
}

std::string TWFilesWindowController::loadRules(const std::string& path, Existing existing)
{
    auto loaded = list_.read(path);
    if (loaded.state != TWListState::Saved)
        return loaded.problem;
    if (existing == Existing::Skip)
        list_.merge(std::move(loaded.records));
    else
        list_.edit([&](auto& rules) { rules = std::move(loaded.records); });
    ruleChanged();
    return "";
}

std::optional<std::vector<TWFilesRule>> TWFilesWindowController::defaultRules(std::string& problem) const
{
    auto loaded = list_.read(defaultsPath());
    if (loaded.state == TWListState::Saved)
        return std::move(loaded.records);
    problem = TWText::fill(NoDefaults, { defaultsPath() });
    return std::nullopt;
}

void TWFilesWindowController::addRule(TWFilesRule rule)
{
    list_.edit([&](auto& rules) { rules.push_back(std::move(rule)); });
    ruleChanged();
    if (view_)
        view_->selectRow(static_cast<int>(rules().size()) - 1);
}

void TWFilesWindowController::ok()
{
    const auto problem = write();
    if (!problem.empty())
        context_.alerts.show({ NotSavedTitle, problem, OK, "" }, [](TWAnswer) {});
    else if (view_)
        view_->closeSheet();
}

void TWFilesWindowController::restoreDefaults()
{
    const TWAlert question{ DefaultsTitle, DefaultsText, Yes, No, TWConfirming::LosesSomething };
    askToApplyDefaults(context_.alerts, question, NotAppliedTitle);
}

std::string TWFilesWindowController::applyDefaults()
{
    std::string problem;
    auto defaults = defaultRules(problem);
    if (!defaults)
        return problem;
    list_.edit([&](auto& rules) { rules = std::move(*defaults); });
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
    list_.edit([&](auto& rules) { rules.erase(rules.begin() + row); });
    ruleChanged();
}

void TWFilesWindowController::insertRule(int row, TWFilesRule rule)
{
    list_.edit([&](auto& rules) { rules.insert(rules.begin() + row, std::move(rule)); });
    ruleChanged();
}

void TWFilesWindowController::edit(int row, const std::function<void(TWFilesRule&)>& change)
{
    list_.edit([&](auto& rules) { change(rules[static_cast<std::size_t>(row)]); });
}

void TWFilesWindowController::setActive(int row, bool active)
{
    edit(row, [&](TWFilesRule& rule) { rule.active = active; });
}

void TWFilesWindowController::setDescription(int row, const std::string& description)
{
    edit(row, [&](TWFilesRule& rule) { rule.description = description; });
}

void TWFilesWindowController::setFilePath(int row, const std::string& path)
{
    edit(row, [&](TWFilesRule& rule) { rule.filePath = path; });
    countNotes();
}

void TWFilesWindowController::setWhatToDelete(int row, std::int64_t whatToDelete)
{
    edit(row, [&](TWFilesRule& rule) { rule.whatToDelete = whatToDelete; });
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
    return notes_.note(rules()[static_cast<std::size_t>(row)], dictionary_.wordDictionary());
}

std::string TWFilesWindowController::absolutePath(int row) const
{
    return context_.deletion.places.expand(rules()[static_cast<std::size_t>(row)].filePath);
}

std::string TWFilesWindowController::defaultsPath() const
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
    // Several edits within one turn of the event loop start one count.
    counting_ = context_.deletion.runLoop.after(
        TWRunLoop::Duration(0), [this] { notes_.find(rules(), dictionary_.wordDictionary()); });
}
