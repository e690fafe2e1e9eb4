#include "platform/linux/TWLinuxHost.h"

#include "platform/linux/TWLinuxApplications.h"
#include "platform/linux/TWLinuxEndRequests.h"
#include "platform/linux/TWLinuxMountTable.h"
#include "platform/linux/TWLinuxPeer.h"
#include "platform/linux/TWLinuxProcessLauncher.h"
#include "platform/linux/TWLinuxVolumes.h"
#include "platform/linux/TWLinuxWorkspace.h"
#include "platform/posix/TWPosixLocks.h"
#include "platform/posix/TWSocketHandover.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace {

constexpr int PatienceWithMainThread = 5000; // in milliseconds

}

std::unique_ptr<TWHost> TWMakeHost()
{
    return std::make_unique<TWLinuxHost>();
}

void TWLinuxHost::prepareProcess() const
{
    // Otherwise a file opened later could get the number of a standard descriptor, and output would go into it.
    for (const int descriptor : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO }) {
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", O_RDWR); // gets the lowest free number, which is this descriptor
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // If our parent ignored it, the kernel would reap our children itself, and their exit status would be lost.
    std::signal(SIGCHLD, SIG_DFL);
}

std::string TWLinuxHost::problemOfPlaces() const
{
    return TWLinuxProblemOfPlaces(fileSystem_);
}

TWPlaces TWLinuxHost::sandboxPlaces(const std::string& root) const
{
    return TWLinuxSandboxPlaces(root, places_);
}

std::unique_ptr<TWProcessLauncher> TWLinuxHost::makeLauncher(TWRunLoop& runLoop) const
{
    return std::make_unique<TWLinuxProcessLauncher>(runLoop);
}

std::unique_ptr<TWMountTable> TWLinuxHost::makeMountTable() const
{
    return std::make_unique<TWLinuxMountTable>();
}

std::unique_ptr<TWLocks> TWLinuxHost::makeLocks() const
{
    return std::make_unique<TWPosixLocks>();
}

std::unique_ptr<TWApplications> TWLinuxHost::makeApplications(const TWPlaces& places) const
{
    return std::make_unique<TWLinuxApplications>(
        places, fileSystem_, ownFiles_, TWLinuxApplications::Session::current(places));
}

std::unique_ptr<TWVolumes> TWLinuxHost::makeVolumes(const TWPlaces& places) const
{
    return std::make_unique<TWLinuxVolumes>(places);
}

std::unique_ptr<TWWorkspace> TWLinuxHost::makeWorkspace(const TWPlaces& places) const
{
    return std::make_unique<TWLinuxWorkspace>(
        places, fileSystem_, ownFiles_, TWLinuxApplications::Session::current(places));
}

std::unique_ptr<TWHandover> TWLinuxHost::makeHandover(const TWPlaces& places, const std::string& dataFolder) const
{
    return std::make_unique<TWSocketHandover>(TWSocketHandover::Setup{
        fileSystem_, dataFolder, places.sandboxRoot, places.runtimeFolder, TWLinuxPeerIsThisUser });
}

void TWLinuxHost::holdEndRequests() const
{
    TWLinuxEndRequests::hold();
}

std::unique_ptr<TWRunLoopHandle> TWLinuxHost::whenToldToEnd(TWRunLoop& runLoop, std::function<void()> requested) const
{
    return std::make_unique<TWLinuxEndRequests>(runLoop, std::move(requested), PatienceWithMainThread);
}

std::optional<std::string> TWLinuxHost::makeTemporaryFolder(int& error) const
{
    auto folder = places().temporaryFolder + "/tidewell-XXXXXX";
    if (mkdtemp(folder.data()))
        return folder;
    error = errno;
    return std::nullopt;
}

bool TWLinuxHost::hasDisplay() const
{
    for (const auto* variable : { "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM" }) {
        const char* value = std::getenv(variable);
        if (value && *value)
            return true;
    }
    return false;
}

int TWLinuxHost::becomeProgram(const std::string& path, char** arguments) const
{
    execv(path.c_str(), arguments);
    return errno;
}
