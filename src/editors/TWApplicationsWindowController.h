#pragma once

#include "cleaners/TWApplicationsCleaner.h"
#include "editors/TWApplicationFinder.h"
#include "editors/TWApplicationNotes.h"
#include "editors/TWEditorContext.h"
#include "editors/TWRecordEditor.h"
#include "settings/TWRecordList.h"

class TWDictionaryWindowController;

// Owns the list of applications that the Applications cleaner quits, and the two settings of that cleaner. The list is
// saved by ok(), the settings at once; a run uses both as they are now. Main thread.
class TWApplicationsWindowController final : public TWRecordEditor {
public:
    TWApplicationsWindowController(const TWEditorContext&, const TWDictionaryWindowController&);

    void setView(TWRecordView* view) { view_ = view; }
    void awakeFromNib(TWLaunchKind) override;
    const char* title() const override { return "the list of applications"; }
    int recordCount() const override { return static_cast<int>(applicationsArray().size()); }
    bool hasUnsavedEdits() const override { return list_.hasUnsavedEdits(); }
    std::string write() override { return list_.write(); }
    std::string file() const override { return list_.path(); }
    std::string keptAs() const override { return list_.keptAs(); }
    std::string problem() const override { return list_.problem(); }

    const std::vector<TWApplicationsRecord>& applicationsArray() const { return list_.records(); }

    // For commands, which change the saved list and then the live one.
    TWRecordList<TWApplicationsRecord>& list() { return list_; }

    // What the cleaner needs, with the live list itself, not a copy.
    TWApplicationsCleanerInfo settings() const;

    // The setters return "" or one line if the setting could not be saved; it is in use all the same.
    bool forceQuit() const;
    std::string setForceQuit(bool);

    // The choices of the time-out, in seconds, and the one that is set, which may be none of them.
    static const std::vector<std::int32_t>& timeouts();
    std::int32_t timeout() const;
    std::string setTimeout(std::int32_t seconds);

    // Finds applications for a user who chooses some.
    TWApplicationFinder& finder() { return finder_; }

    // Appends the applications, in this order, and selects the last one. An application may be in the list several
    // times. An alert names those that cannot be in a list.
    void add(const std::vector<TWApplication>&);

    // The same with what is at these absolute paths. Reads them in the background first.
    void addPaths(const std::vector<std::string>& paths) override;
    void addPath(const std::string& path) override { addPaths({ path }); }

    // The record of the application at that absolute path. On failure returns nothing and sets problem to one line.
    // Reads a file.
    std::optional<TWApplicationsRecord> recordFor(const std::string& path, std::string& problem) const;

    // The selected row, if there is one.
    void remove();
    void removeEntry(int row);
    void insertEntry(int row, TWApplicationsRecord); // row may be one past the last

    // What is at the record's path now, as far as it is known.
    TWApplicationNote note(int row) const { return notes_.note(absolutePath(row)); }

    // How often the application stands in the list.
    std::size_t occurrences(int row) const { return occurrences_.at(absolutePath(row)); }

    std::string absolutePath(int row) const;

    void ok() override;
    void help() override;
    bool hasDefaults() const override { return false; }
    void sheetOpened() override;
    void sheetClosed() override;
    const TWPlaces& places() const override { return context_.deletion.places; }

private:
    void openWaiting();
    void append(const std::vector<TWApplicationFinder::Opened>&);
    std::optional<TWApplicationsRecord> recordOf(const TWApplication&, std::string& problem) const;
    void listChanged();
    void findNotes();

    const TWEditorContext context_;
    TWRecordView* view_ = nullptr;
    TWRecordList<TWApplicationsRecord> list_;
    std::map<std::string, std::size_t> occurrences_; // by absolute path
    TWApplicationFinder finder_;
    TWApplicationFinder opener_; // of the paths to be added
    std::vector<std::string> waiting_; // paths to be added, while others are opened
    bool isOpening_ = false;
    TWApplicationNotes notes_;
    bool sheetIsOpen_ = false;
};
