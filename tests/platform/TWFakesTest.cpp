// The fakes keep the same promises as the bodies whose place they take.

#include "fakes/TWFakes.h"
#include "builders/TWTemporaryFolder.h"
#include "contracts/TWAlertsContract.h"
#include "contracts/TWBundleContract.h"
#include "contracts/TWLocksContract.h"
#include "contracts/TWMountTableContract.h"
#include "contracts/TWProcessLauncherContract.h"
#include "contracts/TWRunLoopContract.h"
#include "contracts/TWUserDefaultsContract.h"
#include "platform/posix/TWFileBundle.h"
#include "platform/posix/TWPosixOwnFiles.h"

namespace {

struct Launcher {
    explicit Launcher(TWFakeMachine& machine)
        : recorder(machine.launcher)
    {
        recorder.lasting = { "/bin/sleep" };
        recorder.missing = { "/missing" };
    }
    TWProcessLauncher& launcher() { return recorder; }

    TWRecordingLauncher& recorder;
};

struct MountTable {
    TWMountTable& table() { return fake; }
    std::string mountOne() { return fake.points.emplace_back("/mnt"); }

    TWFakeMountTable fake;
};

struct Alerts {
    Alerts() { fake.leavesOpen = true; }
    TWAlerts& alerts() { return fake; }
    void press(TWAnswer answer) { fake.answer(answer); }

    TWFakeAlerts fake;
};

struct Bundle {
    TWBundle& bundle() { return fake; }

    TWFakeBundle fake{ "/resources" };
};

// The real one is small, and stands beside the fake.
struct FileBundle {
    TWBundle& bundle() { return real; }

    TWTemporaryFolder folder;
    std::string list = folder.write("Info.plist",
        "<plist><dict><key>CFBundleIdentifier</key><string>id</string><key>CFBundleVersion</key><string>1.0</string>"
        "<key>missing</key><integer>7</integer></dict></plist>");
    TWPosixOwnFiles ownFiles;
    TWFileBundle real{ ownFiles, folder.path() };
};

struct UserDefaults {
    TWUserDefaults& defaults() { return fake; }

    TWFakeUserDefaults fake;
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWAlertsContract, Alerts);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWBundleContract, Bundle);
INSTANTIATE_TYPED_TEST_SUITE_P(File, TWBundleContract, FileBundle);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWRunLoopContract, TWFakeRunLoop);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWLocksContract, TWFakeLocks);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWProcessLauncherContract, Launcher);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWUserDefaultsContract, UserDefaults);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWMountTableContract, MountTable);
