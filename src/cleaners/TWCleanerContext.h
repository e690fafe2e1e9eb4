#pragma once

#include "deletion/TWFileDeleter.h"
#include "platform/TWApplications.h"
#include "platform/TWFolderWatch.h"
#include "platform/TWLogSources.h"
#include "platform/TWOpenFiles.h"
#include "platform/TWPreferenceFiles.h"
#include "platform/TWVolumes.h"
#include "platform/TWWorkspace.h"
#include "settings/TWSettings.h"

// What is known of other programs.
struct TWOtherPrograms {
    const TWApplications& applications;
    const TWPreferenceFiles& files;
};

// What is known of logs.
struct TWLogKnowledge {
    const TWLogSources& sources;
    const TWFolderWatcher& watcher;
    const TWOpenFiles& openFiles;
};

// What every cleaner needs.
struct TWCleanerContext {
    const TWDeletionTools& deletion;
    const TWSettings& settings;
    const TWOtherPrograms& programs;
    const TWLogKnowledge& logs;
    const TWWorkspace& workspace;
    TWVolumes& volumes;

    // How the settings say that files are deleted.
    TWSecureMode secureMode() const
    {
        return settings.boolean(TWKey::SecurelyDeleteFiles) ? settings.integer(TWKey::SecurelyDeleteFilesMode)
                                                            : TWPlainDelete;
    }
    TWAuthorization authorization() const
    {
        return settings.boolean(TWKey::UseAuthorization) ? TWAuthorization::Yes : TWAuthorization::No;
    }
};
