#pragma once

#include "builders/TWTemporaryFolder.h"
#include "fakes/TWFakeRunLoop.h"
#include "fakes/TWFakes.h"
#include "fakes/TWRecordingLauncher.h"
#include "platform/TWPlaces.h"
#include "platform/posix/TWPosixFileSystem.h"

// A whole user's machine below a throwaway folder: real files, everything else a fake. Its home, trash, resources and data folder
// lie where they do on Linux.
struct TWFakeMachine {
    TWTemporaryFolder root;
    TWFakeRunLoop runLoop;
    TWRecordingLauncher launcher {runLoop, root.path()};
    TWPosixFileSystem fileSystem;
    TWFakeMountTable mountTable;
    TWFakeUserDefaults userDefaults;
    TWFakeBundle bundle;
    TWFakeLocks locks;
    TWFakeAlerts alerts;
    TWFakeNotifier notifier;
    TWPlaces places;
    std::string dataFolder = root.path("home/.local/share/Tidewell");

    TWFakeMachine()
    {
        places.home = root.folder("home");
        places.configHome = root.path("home/.config");
        places.dataHome = root.folder("home/.local/share");
        places.stateHome = root.path("home/.local/state");
        places.cacheHome = root.path("home/.cache");
        places.temporaryFolder = root.folder("tmp");
        places.systemLogs = root.folder("var/log");
        places.trash = root.path("home/.local/share/Trash");
        places.resources = bundle.resources = root.folder("resources");
        places.rm = "/bin/rm";
        places.srm = "/libexec/srm";
        places.eject = "/libexec/eject";
    }
};
