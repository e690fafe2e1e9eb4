#pragma once

#include "editors/TWEditorContext.h"
#include "editors/TWKeepNotes.h"
#include "editors/TWRecordEditor.h"
#include "settings/TWRecordList.h"

class TWDictionaryWindowController;

// Owns the keep list and hands it to the deletion guard. What is added is in force at once; what is removed or changed
// stays in force until it is saved, so that a mistyped edit never deletes anything. Until a list is saved, the shipped
// one is in force; a saved list is the whole truth. While the saved list cannot be read, the guard refuses everything.
// If another process or the user changes the file, the guard learns that before the next path. Main thread.
class TWKeepWindowController final : public TWRecordEditor {
public:
    TWKeepWindowController(const TWEditorContext&, const TWDictionaryWindowController&);
    ~TWKeepWindowController();

    void setView(TWRecordView* view) { view_ = view; }
    void awakeFromNib(TWLaunchKind) override;
    const char* title() const override { return "the keep list"; }
    int recordCount() const override { return static_cast<int>(entries().size()); }
    bool hasUnsavedEdits() const override { return list_.hasUnsavedEdits(); }

    const std::vector<TWKeepRecord>& entries() const { return list_.records(); }

    // What the guard keeps now: the entries in the file, then those of the live list that are not saved.
    std::vector<TWKeepRecord> inForce();

    // Changes the live list, which write() saves.
    void edit(const std::function<void(std::vector<TWKeepRecord>&)>& change);

    // For commands, which change the saved list and then the live one with changeSaved() or changeSavedRow().
    TWRecordList<TWKeepRecord>& list() { return list_; }

    bool canBeSaved() const override { return firstMistake() == entries().end(); }
    void ok() override;
    void restoreDefaults() override;
    void help() override;

    // Adds the entry at the end and selects it.
    void addEntry(TWKeepEntry);

    // The same with an entry that keeps what is at that absolute path, a folder with everything in it.
    void addPath(const std::string& path) override;

    // For a row of another window, and for commands: adds the entry to the saved list and to the live one, unless it is
    // there already. Returns "", or one line if it could not be saved; then nothing has changed. A list that cannot be
    // read stays as it is, because what else it would keep is not known.
    std::string save(const TWKeepEntry&);

    // The same with what is at that absolute path, a folder with everything in it. Nothing is kept in the Trash, so
    // that a path in it is not saved either.
    std::string keep(const std::string& path);

    // In-place edits. Rows count from 0 and must exist.
    void removeEntry(int row);
    void insertEntry(int row, TWKeepRecord); // row may be one past the last
    void setText(int row, const std::string& text);
    void setKind(int row, TWKeepEntry::Kind);

    std::string applyDefaults() override;

    std::string write() override;

    const TWPlaces& places() const override { return context_.deletion.places; }

    void sheetOpened() override;
    void sheetClosed() override;
    TWKeepNote note(int row) const;

    std::string file() const override { return list_.path(); }
    std::string keptAs() const override { return list_.keptAs(); }

    // One line if the saved list exists but could not be read, or if there is none and the shipped one could not be
    // read, else "". Nothing may be deleted then.
    std::string problem() const override;

private:
    std::string defaultsPath() const;
    TWKeepEntry entryFor(const std::string& path) const;
    void change(int row, TWKeepEntry);
    void listChanged();
    void findNotes();
    std::vector<TWKeepRecord>::const_iterator firstMistake() const;
    std::vector<TWKeepRecord> savedAndLive() const;
    void noteSaved();
    void takeUpFile();
    void handToGuard();

    TWEditorContext context_;
    TWRecordView* view_ = nullptr;
    TWRecordList<TWKeepRecord> list_;
    std::string defaultsProblem_;
    std::vector<TWKeepRecord> saved_; // what the file held when it was last read, or what stands in for it
    TWFileLook seen_; // the file at that time
    bool fileUnreadable_ = false; // the file has been damaged since it was loaded
    bool sheetIsOpen_ = false;
    TWKeepNotes notes_;
    std::unique_ptr<TWRunLoopHandle> finding_; // begins on the next turn
};
