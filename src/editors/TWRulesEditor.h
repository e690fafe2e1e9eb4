#pragma once

#include "deletion/TWFileDeleter.h"
#include "editors/TWEditorContext.h"
#include "editors/TWRecordEditor.h"
#include "settings/TWRecordList.h"
#include "support/TWText.h"

// The controller of a list of rules: loads it, merges newly shipped default rules, lets the user edit it in place,
// saves it, and hands the live list to the cleaning run. Rows count from 0 and must exist. Main thread.
template <TWRecord Rule>
class TWRulesEditor : public TWRecordEditor {
public:
    using Rules = std::vector<Rule>;

    void setView(TWRecordView* view) { view_ = view; }
    void awakeFromNib(TWLaunchKind) override;
    int recordCount() const override { return static_cast<int>(rules().size()); }
    bool hasUnsavedEdits() const override { return list_.hasUnsavedEdits(); }

    // The live list itself, not a copy.
    std::shared_ptr<Rules> settings() const { return list_.live(); }
    const Rules& rules() const { return list_.records(); }
    const Rule& rule(int row) const { return rules()[static_cast<std::size_t>(row)]; }

    enum class Existing { Replace, Skip };

    // Replaces the live list by the file's, or appends those of its rules whose identity no rule of the list has. A
    // file that cannot be read leaves the list as it is; the answer is then one line about it, else "".
    std::string loadRules(const std::string& path, Existing);

    // Adds the rule at the end, selects it and scrolls to it.
    void addRule(Rule);

    // For commands, which change the saved rules and then the live ones.
    TWRecordList<Rule>& list() { return list_; }

    // The shipped rules. If they cannot be read, returns nothing and sets the problem to one line.
    std::optional<Rules> defaultRules(std::string& problem) const;

    // Sheet buttons.
    void ok() override;
    void restoreDefaults() override;
    void remove();
    void help() override;
    void reloadTable();

    // The absolute path that a rule names.
    std::string absolutePath(int row) const { return context_.deletion.places.expand(rule(row).filePath); }

    void removeRule(int row);
    void insertRule(int row, Rule); // row may be one past the last
    void setActive(int row, bool active);

    std::string applyDefaults() override;
    std::string write() override { return list_.write(); }
    const TWPlaces& places() const override { return context_.deletion.places; }

    void sheetOpened() override; // also determines all notes anew if the sheet is open already
    void sheetClosed() override;

    std::string file() const override { return list_.path(); }
    std::string keptAs() const override { return list_.keptAs(); }

    // One line if the saved list exists but could not be read, else "". In that case the shipped rules replace it, all
    // switched off.
    std::string problem() const override { return list_.problem(); }

protected:
    TWRulesEditor(const TWEditorContext&, const char* fileName, const char* helpAnchor);
    ~TWRulesEditor() = default;

    const TWEditorContext& context() const { return context_; }
    TWRecordView* view() const { return view_; }

    void edit(int row, const std::function<void(Rule&)>&);

    // Determines the notes anew soon if the sheet is open.
    void countNotes();
    void notesChanged() const;

private:
    virtual void findNotes() = 0;
    virtual void clearNotes() = 0;

    std::string defaultsPath() const { return context_.bundle.resourcePath(fileName_); }
    Rules rulesInstead(TWListState) const;
    void ruleChanged();

    TWEditorContext context_;
    const char* const fileName_;
    const char* const helpAnchor_;
    TWRecordView* view_ = nullptr;
    TWRecordList<Rule> list_;
    bool sheetIsOpen_ = false;
    std::unique_ptr<TWRunLoopHandle> counting_; // begins on the next turn
};

template <TWRecord Rule>
TWRulesEditor<Rule>::TWRulesEditor(const TWEditorContext& context, const char* fileName, const char* helpAnchor)
    : context_(context)
    , fileName_(fileName)
    , helpAnchor_(helpAnchor)
    , list_(context.dataFolder, fileName, [this](TWListState state, const auto&) { return rulesInstead(state); })
{
    list_.setChanged([this] { ruleChanged(); });
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::awakeFromNib(TWLaunchKind kind)
{
    list_.load();
    auto lastVersion = context_.settings.string(TWKey::LastLaunchedVersion);
    if (lastVersion.empty())
        lastVersion = "1.0";
    if (kind == TWLaunchKind::Window && problem().empty() && lastVersion != context_.bundle.info("CFBundleVersion"))
        loadRules(defaultsPath(), Existing::Skip);
}

// Differs on purpose: the rules shown in place of a list that cannot be read are switched off, so they delete nothing.
template <TWRecord Rule>
typename TWRulesEditor<Rule>::Rules TWRulesEditor<Rule>::rulesInstead(TWListState state) const
{
    auto rules = list_.read(defaultsPath()).records;
    for (auto& each : rules)
        each.active = each.active && state == TWListState::Missing;
    return rules;
}

template <TWRecord Rule>
std::string TWRulesEditor<Rule>::loadRules(const std::string& path, Existing existing)
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

template <TWRecord Rule>
std::optional<typename TWRulesEditor<Rule>::Rules> TWRulesEditor<Rule>::defaultRules(std::string& problem) const
{
    constexpr auto NoDefaults = "The default rules \"%@\" could not be read. Please install Tidewell again.";
    auto loaded = list_.read(defaultsPath());
    if (loaded.state == TWListState::Saved)
        return std::move(loaded.records);
    problem = TWText::fill(NoDefaults, { defaultsPath() });
    return std::nullopt;
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::addRule(Rule rule)
{
    list_.edit([&](auto& rules) { rules.push_back(std::move(rule)); });
    ruleChanged();
    if (view_)
        view_->selectRow(static_cast<int>(rules().size()) - 1);
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::ok()
{
    const auto problem = write();
    if (!problem.empty())
        context_.alerts.show({ "The rules could not be saved.", problem, "OK", "" }, [](TWAnswer) {});
    else if (view_)
        view_->closeSheet();
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::restoreDefaults()
{
    const TWAlert question{ "Are you sure you want to apply the default set of rules?",
        "The current set of rules will be overwritten. This operation is not undoable.", "Yes", "No",
        TWConfirming::LosesSomething };
    askToApplyDefaults(context_.alerts, question, "The default rules could not be applied.");
}

template <TWRecord Rule>
std::string TWRulesEditor<Rule>::applyDefaults()
{
    std::string problem;
    auto defaults = defaultRules(problem);
    if (!defaults)
        return problem;
    list_.edit([&](auto& rules) { rules = std::move(*defaults); });
    ruleChanged();
    return "";
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::remove()
{
    if (view_ && view_->selectedRow() != -1)
        removeRule(view_->selectedRow());
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::help()
{
    if (view_)
        view_->openHelpAnchor(helpAnchor_);
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::reloadTable()
{
    if (view_)
        view_->reloadTable();
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::removeRule(int row)
{
    list_.edit([&](auto& rules) { rules.erase(rules.begin() + row); });
    ruleChanged();
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::insertRule(int row, Rule rule)
{
    list_.edit([&](auto& rules) { rules.insert(rules.begin() + row, std::move(rule)); });
    ruleChanged();
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::edit(int row, const std::function<void(Rule&)>& change)
{
    list_.edit([&](auto& rules) { change(rules[static_cast<std::size_t>(row)]); });
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::setActive(int row, bool active)
{
    edit(row, [&](Rule& rule) { rule.active = active; });
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::sheetOpened()
{
    clearNotes();
    sheetIsOpen_ = true;
    countNotes();
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::sheetClosed()
{
    sheetIsOpen_ = false;
    counting_.reset();
    clearNotes();
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::ruleChanged()
{
    reloadTable();
    countNotes();
}

// Several edits within one turn of the event loop start one count.
template <TWRecord Rule>
void TWRulesEditor<Rule>::countNotes()
{
    if (sheetIsOpen_)
        counting_ = context_.deletion.runLoop.after(TWRunLoop::Duration(0), [this] { findNotes(); });
}

template <TWRecord Rule>
void TWRulesEditor<Rule>::notesChanged() const
{
    if (view_)
        view_->notesChanged();
}
