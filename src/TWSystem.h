#pragma once

#include "app/TWPlatform.h"
#include "platform/TWHost.h"
#include "platform/posix/TWFileBundle.h"
#include "platform/posix/TWFileUserDefaults.h"
#include "platform/qt/TWQtRunLoop.h"
#include "settings/TWDataFolder.h"

#include <optional>

// What both programs are assembled from: `tidewell`, which carries out commands, and `tidewell-window`. Main thread.

// Must be called first in main().
void TWPrepareProcess(const TWHost&);

// The bundle of this installation; it is the same in a sandbox. Must be called before anything else is opened or
// written. If Tidewell is not completely installed or cannot tell where its places are, returns nothing and sets
// problem to one line.
std::optional<TWFileBundle> TWInstalledBundle(const TWHost&, std::string& problem);

// The working directory; "" if it has been deleted.
std::string TWWorkingFolder();

// From here on no relative path has a meaning. A program in a folder would keep the volume of it from being unmounted.
void TWLeaveWorkingFolder();

// The places of this process and the objects that read and write there.
struct TWWorld {
    // The host and the bundle must outlive the world.
    TWWorld(const TWHost&, const TWBundle&, const TWPlaces&);

    const TWHost& host;
    const TWPlaces places;
    const TWBundle& bundle;
    const TWDataFolder dataFolder;
};

// Makes and owns the platform. Needs a QCoreApplication.
class TWSystem final {
public:
    // In a sandbox no notification is posted, because its runs must not show on the desktop.
    TWSystem(const TWWorld&, std::unique_ptr<TWNotifier>);

    TWPlatform platform(TWAlerts&);
    TWRunLoop& runLoop() { return runLoop_; }

    // Call this at the end. Does not return if background work hangs, as on a volume that does not answer: the run
    // loop's destructor would wait for it, so the process ends at once, with the status that the function returns.
    void exitIfWorkHangs(const std::function<int()>& status);

private:
    const TWWorld& world_;
    TWQtRunLoop runLoop_;
    const std::unique_ptr<TWProcessLauncher> launcher_;
    const std::unique_ptr<TWMountTable> mountTable_;
    const std::unique_ptr<TWLocks> locks_;
    TWFileUserDefaults userDefaults_;
    const std::unique_ptr<TWNotifier> notifier_;
    const std::unique_ptr<TWApplications> applications_;
    const std::unique_ptr<TWVolumes> volumes_;
    const std::unique_ptr<TWWorkspace> workspace_;
};
