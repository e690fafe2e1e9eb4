#include "TWSystem.h"

#include "cli/TWTerminal.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/qt/TWQtNotifier.h"
#include "support/TWLog.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <QCryptographicHash>

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/signalfd.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

constexpr auto NoSandbox = "The sandbox folder \"%@\" could not be made (%@). Please choose another one.\n";
constexpr auto NotUTF8
    = "The folder \"%@\" cannot be used, since its name is not valid UTF-8. Please choose another one.\n";
constexpr auto SandboxLeaks = "The sandbox folder \"%@\" holds a link that leads out of it: \"%@\". Please remove the "
                              "link or choose another folder.\n";

constexpr auto SettingsFile = "/Tidewell.plist";
constexpr auto ListsLock = ".lists.lock";
constexpr auto WindowSocket = ".window.socket";

// A file opened later must not become the standard output by taking its place.
void fillStandardDescriptors()
{
    for (const int descriptor : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO }) {
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", O_RDWR); // takes the lowest free one, this one
    }
}

// Qt's own warnings, less the one that a machine without a login session gives at every start.
void writeQtMessage(QtMsgType, const QMessageLogContext&, const QString& message)
{
    if (!message.startsWith("QStandardPaths:"))
        TWLog::write(message.toStdString());
}

// The sandbox's root as a real path, made when missing; nothing when that fails.
std::optional<std::string> sandboxRoot(const std::string& folder)
{
    int error = TWPosixOwnFiles().makeFolders(folder + "/home");
    auto root = TWLinuxFileSystem().realPath(folder, TWLinkAtEnd::Follow);
    if (error == 0 && root)
        return root;
    TWPrint({ TWStatus::Failure, "", TWText::fill(NoSandbox, { folder, TWErrorText(error) }) });
    return std::nullopt;
}

// A link on the way to what is read and written in a sandbox that leads out of it, or nobody knows where; "" when there
// is none.
std::string linkOutOfSandbox(const TWWorld& world)
{
    const auto& root = world.places.sandboxRoot;
    if (root.empty())
        return "";
    for (std::string path : { world.places.home, world.settingsFile, world.dataFolder.file("FilesRules.plist"),
             world.dataFolder.file("Dictionary.plist") }) {
        for (std::error_code error; path.size() > root.size(); path = TWPath::parent(path)) {
            if (std::filesystem::is_symlink(path, error)
                && !TWPath::isAtOrBelow(std::filesystem::canonical(path, error).string(), root))
                return path;
        }
    }
    return "";
}

sigset_t stopSignals()
{
    sigset_t stopping;
    sigemptyset(&stopping);
    sigaddset(&stopping, SIGINT);
    sigaddset(&stopping, SIGTERM);
    return stopping;
}

}

void TWPrepareProcess()
{
    fillStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN);
    qInstallMessageHandler(writeQtMessage);
}

int TWPrint(const TWCommandResult& result)
{
    const bool written = TWWriteToOutput(result.out);
    std::fwrite(result.err.data(), 1, result.err.size(), stderr);
    return written ? result.status : std::max(result.status, TWStatus::Failure);
}

std::string TWWorkingFolder()
{
    char folder[4096];
    return getcwd(folder, sizeof folder) ? folder : "/";
}

void TWExpandHome(std::string& path)
{
    if (path.starts_with('~') || path.starts_with('$'))
        path = TWLinuxPlaces().standardize(path);
}

std::optional<TWPlaces> TWPlacesFor(const TWInvocation& invocation, int& status)
{
    if (!invocation.sandbox)
        return TWLinuxPlaces();
    auto folder = *invocation.sandbox;
    TWExpandHome(folder);
    if (!TWText::isValidUTF8(folder)) {
        status = TWPrint({ TWStatus::WrongUse, "", TWText::fill(NotUTF8, { TWText::oneLine(folder) }) });
        return std::nullopt;
    }
    status = TWStatus::Failure;
    const auto root = sandboxRoot(folder);
    return root ? std::optional(TWLinuxSandboxPlaces(*root)) : std::nullopt;
}

TWWorld::TWWorld(const TWPlaces& where)
    : places(where)
    , bundle(ownFiles, places.resources)
    , dataFolder(ownFiles, places, bundle)
    , settingsFile(places.settingsFolder() + SettingsFile)
{
}

std::string TWWorld::problem() const
{
    // The settings file could not be reached.
    if (!TWText::isValidUTF8(settingsFile))
        return TWText::fill(NotUTF8, { TWText::oneLine(places.configHome) });
    const auto link = linkOutOfSandbox(*this);
    return link.empty() ? "" : TWText::fill(SandboxLeaks, { places.sandboxRoot, TWText::oneLine(link) });
}

void TWBlockStopSignals()
{
    const auto stopping = stopSignals();
    pthread_sigmask(SIG_BLOCK, &stopping, nullptr);
}

TWStopSignals::TWStopSignals(TWRunLoop& runLoop, std::function<void()> stop)
{
    const auto stopping = stopSignals();
    descriptor_ = signalfd(-1, &stopping, SFD_CLOEXEC | SFD_NONBLOCK);
    watch_ = runLoop.whenReadable(descriptor_, [this, stop = std::move(stop)] {
        signalfd_siginfo information;
        while (read(descriptor_, &information, sizeof information) > 0) { }
        stop();
    });
}

TWStopSignals::~TWStopSignals()
{
    watch_.reset();
    close(descriptor_);
}

TWSystem::TWSystem(const TWWorld& world)
    : world_(world)
    , launcher_(runLoop_)
    , userDefaults_(world.ownFiles, runLoop_, world.settingsFile)
{
    if (world.places.sandboxed())
        notifier_ = std::make_unique<TWSilentNotifier>();
    else
        notifier_ = std::make_unique<TWQtNotifier>();
}

TWPlatform TWSystem::platform(TWAlerts& alerts)
{
    return { runLoop_, launcher_, world_.fileSystem, world_.ownFiles, mountTable_, world_.places, userDefaults_,
        world_.bundle, locks_, alerts, *notifier_ };
}

std::unique_ptr<TWHeldLock> TWSystem::lockLists(bool& busy)
{
    TWLockResult result;
    for (int attempt = 0; attempt < 100; ++attempt) {
        result = locks_.tryLock(world_.dataFolder.file(ListsLock));
        if (!result.heldByAnother)
            break;
        std::this_thread::sleep_for(20ms);
    }
    busy = result.heldByAnother;
    return std::move(result.lock);
}

// Beside the lists or, where no socket can be, in the session's folder.
TWQtHandover TWSystem::handover() const
{
    const auto& folder = world_.dataFolder;
    std::vector<std::string> paths{ folder.file(WindowSocket) };
    const auto hash = QCryptographicHash::hash(QByteArray::fromStdString(folder.path()), QCryptographicHash::Sha256);
    if (!world_.places.runtimeFolder.empty())
        paths.push_back(world_.places.runtimeFolder + "/tidewell-" + hash.toHex().left(16).toStdString() + ".socket");
    return TWQtHandover(paths);
}
