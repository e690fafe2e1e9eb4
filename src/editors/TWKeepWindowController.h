#pragma once

#include "editors/TWEditor.h"
#include "editors/TWEditorContext.h"
#include "editors/TWKeepRecord.h"
#include "settings/TWRecordList.h"

class TWDictionaryWindowController;

// Owns the keep list and hands it to the deletion guard after every change, saved or not. Until a list is saved, the
// shipped one is in force; a saved list is the whole truth. While the saved list cannot be read, the guard refuses
// everything. Main thread.
class TWKeepWindowController final : public TWEditor {
public:
    TWKeepWindowController(const TWEditorContext&, const TWDictionaryWindowController&);

    void awakeFromNib(TWLaunchKind) override;
    bool hasUnsavedEdits() const override { return list_.hasUnsavedEdits(); }

    const std::vector<TWKeepRecord>& entries() const { return list_.records(); }

    // Changes the live list: in force at once, saved by write().
    void edit(const std::function<void(std::vector<TWKeepRecord>&)>& change);

    // For commands, which change the saved list and then the live one with changeSaved() or changeSavedRow().
    TWRecordList<TWKeepRecord>& list() { return list_; }

    std::string write() override;

    std::string file() const override { return list_.path(); }
    std::string keptAs() const override { return list_.keptAs(); }

    // One line if the saved list exists but could not be read, or if there is none and the shipped one could not be
    // read, else "". Nothing may be deleted then.
    std::string problem() const override;

private:
    std::string defaultsPath() const;
    void handToGuard();

    TWEditorContext context_;
    TWRecordList<TWKeepRecord> list_;
    std::string defaultsProblem_;
};
