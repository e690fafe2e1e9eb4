#pragma once

#include "platform/TWAlerts.h"
#include "platform/TWApplications.h"
#include "platform/TWBundle.h"
#include "platform/TWFileSystem.h"
#include "platform/TWFolderWatch.h"
#include "platform/TWLock.h"
#include "platform/TWLogSources.h"
#include "platform/TWMountTable.h"
#include "platform/TWNotifier.h"
#include "platform/TWOpenFiles.h"
#include "platform/TWOwnFiles.h"
#include "platform/TWPlaces.h"
#include "platform/TWPreferenceFiles.h"
#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"
#include "platform/TWUserDefaults.h"
#include "platform/TWVolumes.h"
#include "platform/TWWorkspace.h"

// Everything that Tidewell needs from the system; assembled once in main().
struct TWPlatform {
    TWRunLoop& runLoop;
    TWProcessLauncher& launcher;
    const TWFileSystem& fileSystem;
    const TWOwnFiles& ownFiles;
    TWMountTable& mountTable;
    const TWPlaces& places;
    TWUserDefaults& userDefaults;
    const TWBundle& bundle;
    TWLocks& locks;
    TWAlerts& alerts;
    TWNotifier& notifier;
    const TWApplications& applications;
    const TWWorkspace& workspace;
    const TWPreferenceFiles& preferenceFiles;
    const TWFolderWatcher& folderWatcher;
    const TWLogSources& logSources;
    const TWOpenFiles& openFiles;
    TWVolumes& volumes;
};
