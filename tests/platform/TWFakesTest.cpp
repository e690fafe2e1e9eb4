// The fakes keep the same promises as the bodies whose place they take.

#include "fakes/TWFakes.h"
#include "contracts/TWAlertsContract.h"
#include "contracts/TWApplicationsContract.h"
#include "contracts/TWFolderWatchContract.h"
#include "contracts/TWLocksContract.h"
#include "contracts/TWMountTableContract.h"
#include "contracts/TWProcessLauncherContract.h"
#include "contracts/TWRunLoopContract.h"
#include "contracts/TWUserDefaultsContract.h"
#include "contracts/TWVolumesContract.h"
#include "fakes/TWFakeVolumes.h"

namespace {

struct FakeLauncher {
    explicit FakeLauncher(TWFakeMachine& machine)
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

struct Applications {
    Applications()
    {
        fake.applications
            = { { "b", "B", "b", "B", "", "/b.desktop", "" }, { "a", "A", "a", "A", "", "/a.desktop", "" } };
    }
    TWApplications& applications() { return fake; }

    TWFakeApplications fake;
};

struct FolderWatch {
    TWFolderWatcher& watcher() { return fake; }
    std::string root() const { return "/logs"; }
    void change(const std::string& folder) { fake.change(folder); }

    TWFakeFolderWatcher fake;
};

struct Alerts {
    Alerts() { fake.leavesOpen = true; }
    TWAlerts& alerts() { return fake; }
    void press(TWAnswer answer) { fake.answer(answer); }

    TWFakeAlerts fake;
};

struct Volumes {
    bool possible() const { return true; }
    TWVolumes& volumes() { return fake; }
    std::string path(const std::string& name) const { return "/media/" + name; }
    void mount(const std::string& path) { fake.mount(path); }
    void unmount(const std::string& path) { fake.unmount(path); }

    TWFakeVolumes fake;
};

struct UserDefaults {
    TWUserDefaults& defaults() { return fake; }

    TWFakeUserDefaults fake;
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWAlertsContract, Alerts);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWApplicationsContract, Applications);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWFolderWatchContract, FolderWatch);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWRunLoopContract, TWFakeRunLoop);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWLocksContract, TWFakeLocks);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWProcessLauncherContract, FakeLauncher);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWUserDefaultsContract, UserDefaults);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWMountTableContract, MountTable);
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, TWVolumesContract, Volumes);
