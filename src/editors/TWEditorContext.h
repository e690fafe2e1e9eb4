#pragma once

#include "deletion/TWFileDeleter.h"
#include "platform/TWAlerts.h"
#include "platform/TWBundle.h"
#include "settings/TWDataFolder.h"
#include "settings/TWSettings.h"

// What every editor is made from.
struct TWEditorContext {
    const TWSettings& settings;
    const TWDataFolder& dataFolder;
    const TWBundle& bundle;
    TWAlerts& alerts;
    const TWDeletionTools& deletion; // to show what a run would do
};
