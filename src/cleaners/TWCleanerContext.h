#pragma once

#include "deletion/TWFileDeleter.h"
#include "settings/TWSettings.h"

// What every cleaner needs.
struct TWCleanerContext {
    const TWDeletionTools& deletion;
    const TWSettings& settings;
};
