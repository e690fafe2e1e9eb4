#pragma once

#include "editors/TWEditor.h"
#include "editors/TWEditorView.h"
#include "platform/TWPlaces.h"

#include <functional>
#include <optional>
#include <vector>

// The operations of the sheet of such a controller. Main thread.
class TWRecordView : public TWEditorView {
public:
    // The list or its problem has changed.
    virtual void reloadTable() = 0;

    // The notes of some records have changed.
    virtual void notesChanged() = 0;

    // -1 if no row is selected.
    virtual int selectedRow() const = 0;

    // Replaces the selection and scrolls to the row.
    virtual void selectRow(int row) = 0;

    // Lets the user choose one file or folder. Answers with its path, or with nothing if the user cancels.
    virtual void choosePath(
        const std::string& title, const std::string& prompt, std::function<void(std::optional<std::string>)>)
        = 0;

protected:
    ~TWRecordView() = default;
};

// The controller of a list of records that is edited in a table. Every change takes effect at once. Main thread.
class TWRecordEditor : public TWEditor {
public:
    virtual int recordCount() const = 0;

    // False if a record has a mistake because of which ok() does not save the list but only says so.
    virtual bool canBeSaved() const { return true; }

    // Sheet buttons.
    virtual void ok() = 0; // saves and closes the sheet, which stays open if the list could not be saved
    virtual void restoreDefaults() { } // asks first
    virtual void help() = 0;

    // Adds a record for what is at that absolute path and selects it.
    virtual void addPath(const std::string& path) = 0;

    // The same for several paths, in this order.
    virtual void addPaths(const std::vector<std::string>& paths);

    virtual const TWPlaces& places() const = 0;

    // While the sheet is open, the notes beside the records are determined in the background.
    virtual void sheetOpened() { }
    virtual void sheetClosed() { }

    // Whether a list is shipped that the user can go back to.
    virtual bool hasDefaults() const { return true; }

    // Replaces the live list by the shipped one. "" or one line if that cannot be read.
    virtual std::string applyDefaults() { return ""; }

protected:
    // Asks the question and, if it is confirmed, applies the defaults. A problem is shown under the title.
    void askToApplyDefaults(TWAlerts&, const TWAlert& question, const char* problemTitle);
};
