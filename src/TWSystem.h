#pragma once

#include "app/TWPlatform.h"
#include "cli/TWInvocation.h"
#include "platform/TWHandover.h"
#include "platform/linux/TWLinuxFileSystem.h"
#include "platform/linux/TWLinuxMountTable.h"
#include "platform/linux/TWLinuxProcessLauncher.h"
#include "platform/posix/TWFileBundle.h"
#include "platform/posix/TWFileUserDefaults.h"
#include "platform/posix/TWPosixLocks.h"
#include "platform/posix/TWPosixOwnFiles.h"
#include "platform/qt/TWQtHandover.h"
#include "platform/qt/TWQtRunLoop.h"
#include "settings/TWDataFolder.h"

// What the two programs have in common: `tidewell`, which carries out commands, and the one of the window. Main thread.

// First thing in main().
void TWPrepareProcess();

// To the terminal. The exit status: the result's, or a failure when it could not be written.
int TWPrint(const TWCommandResult&);

std::string TWWorkingFolder();

// "~" and "$XDG_DATA_HOME" of the real home: "--sandbox=~/x" comes with the tilde, which no shell expands there.
void TWExpandHome(std::string& path);

// Where everything is in a run.
struct TWWorld {
    explicit TWWorld(const TWPlaces&);

    // One line when nothing can be read and written here without harm, else "".
    std::string problem() const;

    const TWLinuxFileSystem fileSystem;
    const TWPosixOwnFiles ownFiles;
    const TWPlaces places;
    const TWFileBundle bundle;
    const TWDataFolder dataFolder;
    const std::string settingsFile;
};

// The places of the run, a sandbox being made when missing. Nothing, and the exit status, after having said why not.
std::optional<TWPlaces> TWPlacesFor(const TWInvocation&, int& status);

// SIGINT and SIGTERM arrive as events of the run loop. Blocked before the first thread.
void TWBlockStopSignals();

class TWStopSignals final {
public:
    TWStopSignals(TWRunLoop&, std::function<void()> stop);
    ~TWStopSignals();

private:
    int descriptor_;
    std::unique_ptr<TWRunLoopHandle> watch_;
};

// The platform of a run. Needs a QCoreApplication.
class TWSystem final {
public:
    explicit TWSystem(const TWWorld&);

    TWPlatform platform(TWAlerts&);
    TWRunLoop& runLoop() { return runLoop_; }

    // Waits a moment for another command that is writing; a window that runs is asked instead, see TWHandover. Nothing,
    // with busy false, where no lock can be made.
    std::unique_ptr<TWHeldLock> lockLists(bool& busy);

    TWQtHandover handover() const;

private:
    const TWWorld& world_;
    TWQtRunLoop runLoop_;
    TWLinuxProcessLauncher launcher_;
    TWLinuxMountTable mountTable_;
    TWFileUserDefaults userDefaults_;
    TWPosixLocks locks_;
    std::unique_ptr<TWNotifier> notifier_;
};

inline constexpr auto TWListsBusy = "Another Tidewell command is changing the lists. Please try again.\n";
