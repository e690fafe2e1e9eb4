#pragma once

#include "editors/TWEditor.h"

// The controller of a list of records that is edited in a table. Every change takes effect at once. Main thread.
class TWRecordEditor : public TWEditor {
public:
    virtual int recordCount() const = 0;

    // Sheet buttons.
    virtual void ok() = 0; // saves and closes the sheet, which stays open if the list could not be saved
    virtual void restoreDefaults() = 0; // asks first
    virtual void help() = 0;

    // Adds a record for what is at that absolute path and selects it.
    virtual void addPath(const std::string& path) = 0;

    // Where the dialog that chooses a file starts.
    virtual const std::string& homeFolder() const = 0;

    // While the sheet is open, the notes beside the records are determined in the background.
    virtual void sheetOpened() = 0;
    virtual void sheetClosed() = 0;
};
