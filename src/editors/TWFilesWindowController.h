#pragma once

#include "cleaners/TWFilesRule.h"
#include "editors/TWEditorContext.h"
#include "editors/TWRecordEditor.h"
#include "editors/TWRuleNotes.h"
#include "settings/TWRecordList.h"

class TWDictionaryWindowController;

// Owns the list of Files rules: loads it, merges newly shipped default rules, lets the user edit it in place, saves it,
// and hands the live list to the cleaning run. Main thread.
class TWFilesWindowController final : public TWRecordEditor {
public:
    TWFilesWindowController(const TWEditorContext&, const TWDictionaryWindowController&);

    void setView(TWRecordView* view) { view_ = view; }
    void awakeFromNib(TWLaunchKind) override;
    const char* title() const override { return "the Files rules"; }
    int recordCount() const override { return static_cast<int>(rules().size()); }
    bool hasUnsavedEdits() const override { return list_.hasUnsavedEdits(); }

    // The live list itself, not a copy.
    TWFilesRuleList settings() const { return list_.live(); }
    const std::vector<TWFilesRule>& rules() const { return list_.records(); }

    enum class Existing { Replace, Skip };

    // Replaces the live list by the file's, or appends those of its rules whose path no rule of the list has. A file
    // that cannot be read leaves the list as it is; the answer is then one line about it, else "".
    std::string loadRules(const std::string& path, Existing);

    // Adds the rule at the end, selects it and scrolls to it.
    void addRule(TWFilesRule);

    // The same with a rule that deletes the item at that absolute path.
    void addPath(const std::string& path) override;

    // For commands, which change the saved rules and then the live ones.
    TWRecordList<TWFilesRule>& list() { return list_; }

    // The shipped rules. If they cannot be read, returns nothing and sets the problem to one line.
    std::optional<std::vector<TWFilesRule>> defaultRules(std::string& problem) const;

    // Sheet buttons.
    void ok() override;
    void restoreDefaults() override;
    void add();
    void remove();
    void help() override;
    void reloadTable();

    // The absolute path that a rule names.
    std::string absolutePath(int row) const;

    // In-place edits. Rows count from 0 and must exist.
    void removeRule(int row);
    void insertRule(int row, TWFilesRule); // row may be one past the last
    void setActive(int row, bool active);
    void setDescription(int row, const std::string& description);
    void setFilePath(int row, const std::string& path);
    void setWhatToDelete(int row, std::int64_t whatToDelete);

    std::string applyDefaults() override;

    std::string write() override { return list_.write(); }

    const std::string& homeFolder() const override { return context_.deletion.places.home; }

    void sheetOpened() override; // also determines all notes anew if the sheet is open already
    void sheetClosed() override;

    // Determines the notes that another list of words has made stale.
    void wordsChanged() { countNotes(); }

    TWRuleNote note(int row);

    std::string file() const override { return list_.path(); }
    std::string keptAs() const override { return list_.keptAs(); }

    // One line if the saved list exists but could not be read, else "". In that case the shipped rules replace it, all
    // switched off.
    std::string problem() const override { return list_.problem(); }

private:
    std::string defaultsPath() const;
    std::vector<TWFilesRule> rulesInstead(TWListState) const;
    void edit(int row, const std::function<void(TWFilesRule&)>&);
    void ruleChanged();
    void countNotes();

    TWEditorContext context_;
    const TWDictionaryWindowController& dictionary_;
    TWRecordView* view_ = nullptr;
    TWRecordList<TWFilesRule> list_;
    bool sheetIsOpen_ = false;
    TWRuleNotes notes_;
    std::unique_ptr<TWRunLoopHandle> counting_; // begins on the next turn
};
