#pragma once

#include "app/TWPlatform.h"
#include "platform/TWHost.h"
#include "platform/posix/TWFileBundle.h"
#include "platform/posix/TWFileUserDefaults.h"
#include "platform/qt/TWQtRunLoop.h"
#include "settings/TWDataFolder.h"

// What both programs are assembled from: `tidewell`, which carries out commands, and the program of the window. Main
// thread.

// The first thing in main().
void TWPrepareProcess(const TWHost&);

// "/" if there is none any more.
std::string TWWorkingFolder();

// Where everything is in a run, and who reads and writes there.
struct TWWorld {
    TWWorld(const TWHost&, const TWPlaces&);

    const TWHost& host;
    const TWPlaces places;
    const TWFileBundle bundle;
    const TWDataFolder dataFolder;
};

// The platform of a run. Needs a QCoreApplication.
class TWSystem final {
public:
    explicit TWSystem(const TWWorld&);

    TWPlatform platform(TWAlerts&);
    TWRunLoop& runLoop() { return runLoop_; }

private:
    const TWWorld& world_;
    TWQtRunLoop runLoop_;
    const std::unique_ptr<TWProcessLauncher> launcher_;
    const std::unique_ptr<TWMountTable> mountTable_;
    const std::unique_ptr<TWLocks> locks_;
    TWFileUserDefaults userDefaults_;
    std::unique_ptr<TWNotifier> notifier_;
};
