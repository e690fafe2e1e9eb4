#pragma once

#include "cleaners/TWFilesRule.h"
#include "editors/TWEditor.h"
#include "editors/TWEditorContext.h"
#include "editors/TWEditorView.h"
#include "editors/TWRuleNotes.h"

#include <functional>
#include <optional>

class TWDictionaryWindowController;

class TWFilesView : public TWEditorView {
public:
    // The list has changed.
    virtual void reloadTable() = 0;

    // The notes of some rules have changed.
    virtual void notesChanged() = 0;

    // -1 when no row is selected.
    virtual int selectedRow() const = 0;

    // Replaces the selection and scrolls to the row.
    virtual void selectRow(int row) = 0;

    // Lets the user choose one file or folder; answers its path, or nothing.
    virtual void choosePath(
        const std::string& title, const std::string& prompt, std::function<void(std::optional<std::string>)>)
        = 0;

protected:
    ~TWFilesView() = default;
};

// Owns the list of Files rules: loads it, merges newly shipped default rules, lets the user edit it in place, saves it,
// and hands the live list to the cleaning run. Main thread.
class TWFilesWindowController final : public TWEditor {
public:
    TWFilesWindowController(const TWEditorContext&, const TWDictionaryWindowController&);

    void setView(TWFilesView* view) { view_ = view; }
    void awakeFromNib(TWLaunchKind) override;
    bool hasUnsavedEdits() const override { return false; }

    // The live list itself, not a copy.
    TWFilesRuleList settings() const { return filesArray_; }
    const std::vector<TWFilesRule>& rules() const { return *filesArray_; }

    enum class Existing { Replace, Skip };

    // Replaces the list by the file's, or appends those of its rules whose path no rule of the list has. A file that
    // cannot be read leaves the list as it is; the answer is then one line about it, else "".
    std::string loadRules(const std::string& path, Existing);

    // Other rules in the place of all, such as those from before a change that could not be saved.
    void replaceRules(std::vector<TWFilesRule>);

    // At the end of the list; selected and scrolled to.
    void addRule(TWFilesRule);

    // The same, for a rule that deletes the item at that absolute path.
    void addPath(const std::string& path);

    // Sheet buttons.
    void ok();
    void restoreDefaults(); // asks first
    void add();
    void remove();
    void help();
    void reloadTable();

    // In-place edits and what the command line does. Rows count from 0 and must exist.
    void removeRule(int row);
    void insertRule(int row, TWFilesRule); // which may also be the one behind the last
    void setActive(int row, bool active);
    void setDescription(int row, const std::string& description);
    void setFilePath(int row, const std::string& path);
    void setWhatToDelete(int row, std::int32_t whatToDelete);

    // "" or one line about default rules that could not be read; the list is then as it was.
    std::string applyDefaults();

    // "" or one line that names the file and the remedy.
    std::string write();

    // Where a choice of files begins.
    const std::string& homeFolder() const { return context_.deletion.places.home; }

    // While the sheet is open, what each rule matches is counted in the background.
    void sheetOpened();
    void sheetClosed();
    TWRuleNote note(int row);

    std::string file() const override;

    // One line when the saved list is there but could not be read, else "". While there is one, no default rules were
    // merged.
    std::string problem() const override { return problem_; }

private:
    std::string defaultRules() const;
    void showDefaultsSwitchedOff();
    TWFilesRule& rule(int row) { return (*filesArray_)[static_cast<std::size_t>(row)]; }
    void ruleChanged();
    void countNotes();

    TWEditorContext context_;
    const TWDictionaryWindowController& dictionary_;
    TWFilesView* view_ = nullptr;
    TWFilesRuleList filesArray_ = std::make_shared<std::vector<TWFilesRule>>();
    std::string problem_;
    bool sheetIsOpen_ = false;
    TWRuleNotes notes_;
    std::unique_ptr<TWRunLoopHandle> counting_; // begins on the next turn
};
