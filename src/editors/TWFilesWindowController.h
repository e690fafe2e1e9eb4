#pragma once

#include "cleaners/TWFilesRule.h"
#include "editors/TWFilesRuleNotes.h"
#include "editors/TWRulesEditor.h"

class TWDictionaryWindowController;

// Owns the list of Files rules. Main thread.
class TWFilesWindowController final : public TWRulesEditor<TWFilesRule> {
public:
    TWFilesWindowController(const TWEditorContext&, const TWDictionaryWindowController&);

    const char* title() const override { return "the Files rules"; }

    // Adds a rule that deletes the item at that absolute path.
    void addPath(const std::string& path) override;

    // The + button.
    void add();

    // In-place edits.
    void setDescription(int row, const std::string& description);
    void setFilePath(int row, const std::string& path);
    void setWhatToDelete(int row, std::int64_t whatToDelete);

    // Determines the notes that another list of words has made stale.
    void wordsChanged() { countNotes(); }

    TWRuleNote note(int row) const;

private:
    void findNotes() override;
    void clearNotes() override { notes_.clear(); }

    const TWDictionaryWindowController& dictionary_;
    TWFilesRuleNotes notes_;
};
