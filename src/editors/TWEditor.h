#pragma once

#include "platform/TWAlerts.h"
#include "platform/TWBundle.h"
#include "settings/TWDataFolder.h"
#include "settings/TWLaunchKind.h"
#include "settings/TWSettings.h"

// The controller of one list that the user edits: it owns the list, and a sheet or a command changes it. Main thread.
class TWEditor {
public:
    virtual ~TWEditor() = default;

    // Loads the list. Called once, before the launch stores the version.
    virtual void awakeFromNib(TWLaunchKind) = 0;

    // One line if the saved list exists but could not be read, else "".
    virtual std::string problem() const = 0;

    // The file of the saved list.
    virtual std::string file() const = 0;

    // The second name of a damaged file that a new list has replaced, or "".
    virtual std::string keptAs() const = 0;

    // Its name in the middle of a sentence: "the keep list".
    virtual const char* title() const = 0;

    // True if the list was changed and not saved. The changes are in use nevertheless.
    virtual bool hasUnsavedEdits() const = 0;

    // Writes the list. "" or one line that names the file and the remedy.
    virtual std::string write() = 0;
};
