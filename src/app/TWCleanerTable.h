#pragma once

#include "app/TWPlanReasons.h"
#include "cleaners/TWCleaner.h"
#include "cleaners/TWCleanerContext.h"

#include <array>
#include <string_view>

class TWEditors;

// Where the settings of a run come from. Without editors, cleaners get empty lists.
struct TWSettingsSources {
    const TWSettings& settings;
    const TWPlaces& places;
    const TWEditors* editors = nullptr;
};

// One of the eight cleaners, in the order of a run. Nothing else in the program knows a cleaner by name.
struct TWCleanerRow {
    const char* name; // on the command line
    const char* title; // in the window
    const char* icon; // name in the icon theme
    TWKey key; // switches it on
    const char* editor; // the editor of what it cleans, by its name in TWEditorTable; "" if there is none
    const char* nothing; // the line in its row if it would do nothing now

    std::unique_ptr<TWCleaner> (*make)(const TWCleanerContext&);

    // Gives the cleaner its settings for the next run.
    void (*giveInfo)(TWCleaner&, const TWSettingsSources&);

    // What its row says about its list, such as "2 of 5 rules on", or "".
    std::string (*listStatus)(const TWSettingsSources&);

    // One clause about its list that its plan does not show, such as a warning about a short word, or "".
    std::string (*listWarning)(const TWSettingsSources&);

    // The folder in which every change makes the row's line stale at once, or "".
    std::string (*watchedFolder)(const TWSettingsSources&);

    // The reasons for a plan that is made from the lists as they are now.
    TWPlanReasons (*reasons)(const TWSettingsSources&);

    bool available = true; // false for a cleaner that is not implemented yet
};

inline constexpr int TWCleanerCount = 8;

const std::array<TWCleanerRow, TWCleanerCount>& TWCleanerTable();

// The position of the cleaner with that name; -1 if there is none.
int TWCleanerPosition(std::string_view name);
