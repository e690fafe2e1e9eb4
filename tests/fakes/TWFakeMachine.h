#pragma once

#include "app/TWPlatform.h"
#include "builders/TWTemporaryFolder.h"
#include "cleaners/TWCleanerContext.h"
#include "deletion/TWFileDeleter.h"
#include "fakes/TWFakeFolderWatcher.h"
#include "fakes/TWFakeRunLoop.h"
#include "fakes/TWFakeVolumes.h"
#include "fakes/TWFakes.h"
#include "fakes/TWRecordingLauncher.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxPreferenceFiles.h"
#include "platform/posix/TWPosixOwnFiles.h"
#include "settings/TWDataFolder.h"
#include "settings/TWSettings.h"
#include "support/TWPath.h"

using Lines = std::vector<std::string>;
using namespace std::chrono_literals;

// A whole user's machine below a throwaway folder: real files where they lie on Linux, everything else a fake.
struct TWFakeMachine {
    TWTemporaryFolder root;
    TWFakeRunLoop runLoop;
    TWRecordingLauncher launcher{ runLoop, root.path() };
    TWLinuxFileSystem fileSystem;
    TWPosixOwnFiles ownFiles;
    TWFakeMountTable mountTable;
    TWFakeUserDefaults userDefaults;
    TWFakeBundle bundle{ root.folder("resources") };
    TWFakeLocks locks;
    TWFakeAlerts alerts;
    TWFakeNotifier notifier;
    TWFakeApplications applications;
    TWFakeWorkspace workspace;
    TWLinuxPreferenceFiles preferenceFiles;
    TWFakeFolderWatcher folderWatcher;
    TWFakeLogSources logSources;
    TWFakeOpenFiles openFiles;
    TWFakeVolumes volumes;
    TWOtherPrograms programs{ applications, preferenceFiles };
    TWLogKnowledge logs{ logSources, folderWatcher, openFiles };
    TWPlaces places = makePlaces(root);
    std::string dataFolder = root.path("home/.local/share/Tidewell");
    TWDeletionGuard guard{ places, fileSystem, mountTable, dataFolder };
    TWDeletionTools tools{ runLoop, launcher, fileSystem, guard, places };
    TWSettings settings{ userDefaults };
    TWDataFolder listFolder{ ownFiles, places, bundle };
    TWPlatform platform{ runLoop, launcher, fileSystem, ownFiles, mountTable, places, userDefaults, bundle, locks,
        alerts, notifier, applications, workspace, preferenceFiles, folderWatcher, logSources, openFiles, volumes };

    // A path as a plan sees it now.
    TWDeletionTarget target(const std::string& path) const
    {
        const std::string parent(TWPath::parent(path));
        const auto real = fileSystem.realPath(parent, TWLinkAtEnd::Follow).value_or(parent);
        const auto identity = fileSystem.look(real).facts.identity;
        return TWDeletionTarget::make({ parent, real, identity }, std::string(TWPath::lastComponent(path)));
    }

    // What the guard's rules say about a path now, after looking below it if they have to; "" if it may be deleted.
    std::string objectionTo(const std::string& path, TWDeletionGuard& asked) const
    {
        const auto planned = target(path);
        int error = 0;
        const auto folder = fileSystem.holdFolder(planned.folder->realPath, error);
        const std::string name(planned.name);
        if (!path.starts_with('/') || name.empty() || !folder)
            return TWDeletionRules::objectionToPath(path);
        const auto rules = asked.rules();
        const auto judged = rules->judgeFolder(*folder, planned.folder->realPath);
        const auto look = folder->look(name);
        auto objection = rules->objection(judged, name, look);
        constexpr auto Search = TWDeletionRules::Search::NamesAndMoved;
        if (objection.empty() && rules->mustLookInside(judged, look, Search))
            objection = rules->objectionInside(judged, name, look, Search, {});
        return objection;
    }

private:
    static TWPlaces makePlaces(const TWTemporaryFolder& root)
    {
        TWPlaces places;
        places.home = root.folder("home");
        places.realHomes = { places.home };
        places.configHome = root.path("home/.config");
        places.dataHome = root.folder("home/.local/share");
        places.stateHome = root.path("home/.local/state");
        places.cacheHome = root.path("home/.cache");
        places.temporaryFolder = root.folder("tmp");
        places.systemLogs = root.folder("var/log");
        places.trash = root.path("home/.local/share/Trash");
        places.resources = root.path("resources");
        places.rm = "/bin/rm";
        places.srm = "/libexec/srm";
        places.eject = "/libexec/eject";
        return places;
    }
};
