#pragma once

#include "deletion/TWFileDeleter.h"
#include "platform/TWApplications.h"
#include "platform/TWPreferenceFiles.h"
#include "settings/TWSettings.h"

// What is known of other programs.
struct TWOtherPrograms {
    const TWApplications& applications;
    const TWPreferenceFiles& files;
};

// What every cleaner needs.
struct TWCleanerContext {
    const TWDeletionTools& deletion;
    const TWSettings& settings;
    const TWOtherPrograms& programs;

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
