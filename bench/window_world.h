#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "platform/linux/TWLinuxApplications.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxFolderWatcher.h"
#include "platform/linux/TWLinuxLogSources.h"
#include "platform/linux/TWLinuxMountTable.h"
#include "platform/linux/TWLinuxOpenFiles.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/linux/TWLinuxPreferenceFiles.h"
#include "platform/linux/TWLinuxProcessLauncher.h"
#include "platform/linux/TWLinuxVolumes.h"
#include "platform/posix/TWFileBundle.h"
#include "platform/posix/TWFileUserDefaults.h"
#include "platform/posix/TWPosixLocks.h"
#include "platform/posix/TWPosixOwnFiles.h"
#include "platform/qt/TWQtRunLoop.h"

// The program behind a window, on this machine and in the home of the environment.

struct NoAlerts final : TWAlerts {
    void show(const TWAlert&, std::function<void(TWAnswer)> answered) override { answered(TWAnswer::Default); }
};

struct NoNotifier final : TWNotifier {
    void post(const TWNotification&) override { }
    void setClicked(std::function<void()>) override { }
};

struct WindowWorld {
    explicit WindowWorld(TWPlaces where)
        : places(std::move(where))
    {
    }

    TWPlaces places;
    TWQtRunLoop runLoop;
    TWLinuxProcessLauncher launcher{ runLoop };
    TWLinuxFileSystem fileSystem;
    TWPosixOwnFiles ownFiles;
    TWLinuxMountTable mountTable;
    TWFileUserDefaults defaults{ ownFiles, runLoop, places.dataHome + "/no settings" };
    TWFileBundle bundle{ ownFiles, places.resources };
    TWPosixLocks locks;
    NoAlerts alerts;
    NoNotifier notifier;
    TWLinuxApplications applications{ places, fileSystem, ownFiles, TWLinuxApplications::Session::current(places) };
    TWLinuxPreferenceFiles preferenceFiles;
    TWLinuxLogSources logSources;
    TWLinuxFolderWatcher folderWatcher;
    TWLinuxOpenFiles openFiles;
    TWLinuxVolumes volumes{ places };
    TWTidewellAppDelegate delegate{ { runLoop, launcher, fileSystem, ownFiles, mountTable, places, defaults, bundle,
                                        locks, alerts, notifier, applications, preferenceFiles, folderWatcher,
                                        logSources, openFiles, volumes },
        TWLaunchKind::Window };
};
