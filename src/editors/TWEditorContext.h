#pragma once

#include "platform/TWAlerts.h"
#include "platform/TWBundle.h"
#include "settings/TWDataFolder.h"
#include "settings/TWSettings.h"

struct TWDeletionTools;

// What every editor needs.
struct TWEditorContext {
    const TWSettings& settings;
    const TWDataFolder& dataFolder;
    const TWBundle& bundle;
    TWAlerts& alerts;
    const TWDeletionTools& deletion; // to show what a run would do
};
