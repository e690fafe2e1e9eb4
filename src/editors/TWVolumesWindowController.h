#pragma once

#include "cleaners/TWVolumesCleaner.h"
#include "editors/TWEditor.h"
#include "editors/TWEditorContext.h"
#include "editors/TWEditorView.h"
#include "settings/TWRecordList.h"

class TWDictionaryWindowController;

// The sheet with the table. Main thread.
class TWVolumesView : public TWEditorView {
public:
    // The rows are others.
    virtual void reloadTable() = 0;

    // What is known of some volumes has changed.
    virtual void notesChanged() = 0;

    virtual void showMessage(const std::string&) = 0;

protected:
    ~TWVolumesView() = default;
};

// Owns the live list of volumes: the saved ones, which are active, and then those that are mounted and not among them.
// Every edit is saved at once. The list follows the mount table. Main thread.
class TWVolumesWindowController final : public TWEditor {
public:
    TWVolumesWindowController(const TWEditorContext&, const TWDictionaryWindowController&);

    void setView(TWVolumesView* view) { view_ = view; }
    void awakeFromNib(TWLaunchKind) override;
    const char* title() const override { return "the list of volumes"; }
    bool hasUnsavedEdits() const override { return saved_.hasUnsavedEdits(); }
    std::string write() override { return saved_.write(); }
    std::string file() const override { return saved_.path(); }
    std::string keptAs() const override { return saved_.keptAs(); }
    std::string problem() const override;

    // In the order in which they are shown.
    const std::vector<TWVolumesRecord>& volumesArray() const { return *volumesArray_; }

    // The live list itself, not a copy.
    TWVolumesCleanerInfo settings() const { return { volumesArray_, { saved_.problem() } }; }

    // The saved volumes. For commands, which change the saved list and then the live one.
    TWRecordList<TWVolumesRecord>& list() { return saved_; }

    // Builds the list anew. What is active but cannot be saved stays.
    void updateVolumesList();

    // Row counts from 0 and must exist. Returns false, and shows why, if the volume cannot be in a list.
    bool setActive(int row, bool active);

    // While the sheet is open, what is known of the volumes is determined in the background.
    void sheetOpened();
    void sheetClosed();

    // False while nobody knows all that is mounted.
    bool isTableReadable() const { return isTableReadable_; }

    bool isMounted(int row) const;
    std::string device(int row) const; // what is mounted there, "" if nothing is
    const TWVolumeFacts* facts(int row) const; // nullptr while they are not known

    void ok();
    void help();
    const TWPlaces& places() const { return context_.deletion.places; }

private:
    void readMounts();
    void look();
    void take(const TWVolumeFacts&);
    const TWVolume* mounted(int row) const;

    const TWEditorContext context_;
    TWVolumesView* view_ = nullptr;
    TWRecordList<TWVolumesRecord> saved_; // the active ones
    const TWVolumesRecordList volumesArray_ = std::make_shared<std::vector<TWVolumesRecord>>();
    std::vector<TWVolume> mounted_; // those that are shown
    bool isTableReadable_ = true;
    bool sheetIsOpen_ = false;
    std::vector<TWVolumeFacts> facts_; // one for each path, also of a volume that has gone
    std::unique_ptr<TWRunLoopHandle> watch_;
    std::unique_ptr<TWVolumeLook> looking_;
};
