#pragma once

#include "builders/TWTemporaryFolder.h"
#include "editors/TWDictionaryWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "fakes/TWFakes.h"
#include "platform/posix/TWFileBundle.h"
#include "platform/posix/TWPosixFileSystem.h"
#include "platform/qt/TWQtRunLoop.h"
#include "ui/TWHelpWindow.h"

#include <QCoreApplication>

// The two editors over real files in a throwaway home.
struct TWSheetTestWorld {
    // Every look of the guard at a path comes by here.
    struct MountTable final : TWMountTable {
        int asked = 0;
        std::vector<std::string> points{ "/" };
        const std::vector<std::string>& mountPoints() override
        {
            ++asked;
            return points;
        }
    };

    static TWPlaces placesIn(const std::string& home)
    {
        TWPlaces places;
        places.home = home;
        places.configHome = home + "/.config";
        places.dataHome = home + "/.local/share";
        places.stateHome = home + "/.local/state";
        places.cacheHome = home + "/.cache";
        return places;
    }

    TWTemporaryFolder home;
    TWPosixFileSystem fileSystem;
    TWPlaces places = placesIn(home.path());
    TWFileBundle bundle{ fileSystem, QCoreApplication::applicationDirPath().toStdString() + "/../share/tidewell" };
    MountTable mountTable;
    TWFakeAlerts alerts;
    TWQtRunLoop runLoop;
    TWFakeUserDefaults userDefaults;
    TWSettings settings{ userDefaults };
    TWDataFolder dataFolder{ fileSystem, places, bundle };
    TWDeletionGuard guard{ places, fileSystem, mountTable, dataFolder.path() };
    TWDictionaryWindowController dictionary{ dataFolder };
    TWFilesWindowController files{ { settings, dataFolder, bundle, fileSystem, places, runLoop, alerts, guard,
        dictionary } };
    TWHelpWindow help{ bundle };
};
