#pragma once

#include "cleaners/TWCleaner.h"
#include "cleaners/TWCleanerContext.h"

#include <array>
#include <string_view>

class TWEditors;

// Where the settings of a run come from. If there are no editors, cleaners get empty settings.
struct TWSettingsSources {
    const TWSettings& settings;
    const TWPlaces& places;
    const TWEditors* editors = nullptr;
};

// One of the eight cleaners, in the order of a run. No other place in the program knows a cleaner by name.
struct TWCleanerRow {
    const char* name; // on the command line
    const char* title; // in the window
    const char* icon; // of the icon theme
    TWKey key; // switches it on
    const char* editor; // that edits what it cleans, by its name in TWEditorTable; "" if there is none
    const char* nothing; // what its row in the window says if it would do nothing now

    std::unique_ptr<TWCleaner> (*make)(const TWCleanerContext&);

    // Gives the cleaner its settings for the coming run.
    void (*giveInfo)(TWCleaner&, const TWSettingsSources&);

    // What its row says about its list, "2 of 5 rules on", or "".
    std::string (*listStatus)(const TWSettingsSources&);

    bool available = true; // the cleaner is built
};

inline constexpr int TWCleanerCount = 8;

const std::array<TWCleanerRow, TWCleanerCount>& TWCleanerTable();

// -1 if there is no cleaner of that name.
int TWCleanerPosition(std::string_view name);
