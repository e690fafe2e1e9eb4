#pragma once

#include "cleaners/TWCleanerContext.h"
#include "platform/TWAlerts.h"
#include "platform/TWBundle.h"
#include "settings/TWDataFolder.h"

// What every editor needs.
struct TWEditorContext {
    TWSettings& settings;
    const TWDataFolder& dataFolder;
    const TWBundle& bundle;
    TWAlerts& alerts;
    const TWDeletionTools& deletion;
    const TWOtherPrograms& programs;
    const TWLogKnowledge& logs;
    const TWWorkspace& workspace;
    TWVolumes& volumes;

    // For the cleaners that show what a run would do.
    TWCleanerContext cleaners() const { return { deletion, settings, programs, logs, workspace, volumes }; }
};
