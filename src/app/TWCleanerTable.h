#pragma once

#include "cleaners/TWCleaner.h"
#include "deletion/TWFileDeleter.h"
#include "settings/TWSettings.h"

#include <array>
#include <memory>
#include <string_view>
#include <vector>

class TWFilesWindowController;
class TWDictionaryWindowController;

// What cleaners are made from.
struct TWCleanerContext {
    const TWDeletionTools& deletion;
    const TWSettings& settings;
};

// Where the settings of a run come from. A source that is absent yields no settings.
struct TWSettingsSources {
    const TWSettings& settings;
    const TWPlaces& places;
    const TWFilesWindowController* files = nullptr;
    const TWDictionaryWindowController* dictionary = nullptr;
};

// One of the eight, in the order of a run: everything that the program knows about it stands in its row.
struct TWCleanerRow {
    const char* name; // on the command line
    const char* title; // in the window
    const char* icon; // of the icon theme
    TWKey key; // switches it on
    bool available; // its cleaner is built
    std::unique_ptr<TWCleaner> (*create)(const TWCleanerContext&);

    // Gives the cleaner its settings for the coming run.
    void (*giveInfo)(TWCleaner&, const TWSettingsSources&);
};

inline constexpr int TWCleanerCount = 8;

const std::array<TWCleanerRow, TWCleanerCount>& TWCleanerTable();

// -1 when there is no cleaner of that name.
int TWCleanerPosition(std::string_view name);
