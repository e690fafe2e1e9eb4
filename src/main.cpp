// Parses the command line, builds the platform and the views, hands both to the delegate.

#include "cli/TWCleanCommand.h"
#include "cli/TWCommands.h"
#include "cli/TWDemo.h"
#include "platform/linux/TWLinuxMountTable.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/linux/TWLinuxProcessLauncher.h"
#include "platform/posix/TWFileBundle.h"
#include "platform/posix/TWPosixFileSystem.h"
#include "platform/posix/TWPosixLocks.h"
#include "platform/qt/TWQtApplicationService.h"
#include "platform/qt/TWQtHandover.h"
#include "platform/qt/TWQtNotifier.h"
#include "platform/qt/TWQtRunLoop.h"
#include "platform/qt/TWQtUserDefaults.h"
#include "support/TWLog.h"
#include "support/TWPath.h"
#include "support/TWText.h"
#include "ui/TWQtAlerts.h"
#include "ui/TWWindowSession.h"

#include <QApplication>
#include <QCryptographicHash>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/signalfd.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using Command = TWInvocation::Command;

constexpr auto NoSandbox = "The sandbox folder \"%@\" could not be made (%@). Please choose another one.\n";
constexpr auto SandboxLeaks = "The sandbox folder \"%@\" holds a link that leads out of it: \"%@\". Please remove the link or choose another folder.\n";
constexpr auto NotUTF8 = "The folder \"%@\" cannot be used, since its name is not valid UTF-8. Please choose another one.\n";
constexpr auto DemoNotEmpty = "The folder \"%@\" is not empty. Please name a new or an empty one for the demonstration.\n";
constexpr auto DemoPlace = "Tidewell makes a world of its own under %@ and cleans it. Nothing outside of it is touched.\n\n";
constexpr auto DemoLeft = "\nHave a look at what is left: find %@/home. Delete the folder when you like.\n";
constexpr auto NoDisplay = "There is no display for a window. Try \"tidewell clean\", \"tidewell demo\" or \"tidewell --help\".\n";
constexpr auto ListsBusy = "Another Tidewell command is changing the lists. Please try again.\n";
constexpr auto NotListening = "Tidewell: commands cannot reach this window (no socket could be made in %@). Please do not change lists with commands "
                              "while it is open.";

constexpr auto SettingsFile = "/Tidewell/Tidewell.conf";
constexpr auto ListsLock = ".lists.lock";
constexpr auto WindowSocket = ".window.socket";

int print(const TWCommandResult& result)
{
    const bool written = TWWriteToOutput(result.out);
    std::fwrite(result.err.data(), 1, result.err.size(), stderr);
    return written ? result.status : std::max(result.status, TWStatus::Failure);
}

// A file opened later must not become the standard output by taking its place.
void fillStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", O_RDWR); // takes the lowest free one, this one
    }
}

std::string workingFolder()
{
    char folder[4096];
    return getcwd(folder, sizeof folder) ? folder : "/";
}

// What is the same for a command and for the window. Needs a QCoreApplication.
class System {
public:
    System(const TWPosixFileSystem& fileSystem, const TWPlaces& places, const TWFileBundle& bundle, const std::string& settingsFile)
        : fileSystem_(fileSystem)
        , places_(places)
        , bundle_(bundle)
        , launcher_(runLoop_)
        , userDefaults_(fileSystem, settingsFile)
    {
        if (places.sandboxed())
            notifier_ = std::make_unique<TWSilentNotifier>();
        else
            notifier_ = std::make_unique<TWQtNotifier>();
    }

    TWPlatform platform(TWAlerts& alerts)
    {
        return {runLoop_, launcher_, fileSystem_, mountTable_, places_, userDefaults_, bundle_, locks_, alerts, *notifier_};
    }

    TWRunLoop& runLoop() { return runLoop_; }
    TWUserDefaults& userDefaults() { return userDefaults_; }
    TWLocks& locks() { return locks_; }

private:
    const TWPosixFileSystem& fileSystem_;
    const TWPlaces& places_;
    const TWFileBundle& bundle_;
    TWQtRunLoop runLoop_;
    TWLinuxProcessLauncher launcher_;
    TWLinuxMountTable mountTable_;
    TWQtUserDefaults userDefaults_;
    TWPosixLocks locks_;
    std::unique_ptr<TWNotifier> notifier_;
};

sigset_t stopSignals()
{
    sigset_t stopping;
    sigemptyset(&stopping);
    sigaddset(&stopping, SIGINT);
    sigaddset(&stopping, SIGTERM);
    return stopping;
}

// SIGINT and SIGTERM, blocked since before the first thread, arrive as events of the run loop.
class StopSignals {
public:
    StopSignals(TWRunLoop& runLoop, std::function<void()> stop)
    {
        const auto stopping = stopSignals();
        descriptor_ = signalfd(-1, &stopping, SFD_CLOEXEC | SFD_NONBLOCK);
        watch_ = runLoop.whenReadable(descriptor_, [this, stop = std::move(stop)] {
            signalfd_siginfo information;
            while (read(descriptor_, &information, sizeof information) > 0) { }
            stop();
        });
    }
    ~StopSignals()
    {
        watch_.reset();
        close(descriptor_);
    }

private:
    int descriptor_ = -1;
    std::unique_ptr<TWRunLoopHandle> watch_;
};

int runClean(System& system, const TWInvocation& invocation, QCoreApplication& application)
{
    TWTerminal terminal(invocation);
    TWTidewellAppDelegate delegate(system.platform(terminal), TWLaunchKind::Command);
    TWCleanCommand command(delegate, terminal, invocation);
    const StopSignals stopping(system.runLoop(), [&] { command.interrupt(); });
    int status = -1;
    command.start([&](int ended) {
        status = ended;
        application.exit(ended);
    });
    // A run can be over before the event loop has begun.
    return status >= 0 ? status : application.exec();
}

// Waits a moment for another command that is writing; a window that runs is asked instead, see TWHandover.
std::unique_ptr<TWHeldLock> lockLists(TWLocks& locks, const std::string& path, bool& busy)
{
    TWLockResult result;
    for (int attempt = 0; attempt < 100; ++attempt) {
        result = locks.tryLock(path);
        if (!result.heldByAnother)
            break;
        std::this_thread::sleep_for(20ms);
    }
    busy = result.heldByAnother;
    return std::move(result.lock);
}

// Beside the lists or, where no socket can be, in the session's folder.
TWQtHandover handoverFor(const TWPlaces& places, const TWDataFolder& dataFolder)
{
    std::vector<std::string> paths {dataFolder.file(WindowSocket)};
    const auto hash = QCryptographicHash::hash(QByteArray::fromStdString(dataFolder.path()), QCryptographicHash::Sha256);
    if (!places.runtimeFolder.empty())
        paths.push_back(places.runtimeFolder + "/tidewell-" + hash.toHex().left(16).toStdString() + ".socket");
    return TWQtHandover(paths);
}

int runListCommand(System& system, const TWPlaces& places, const TWInvocation& invocation, const TWDataFolder& dataFolder, const std::vector<std::string>& words)
{
    const auto handover = handoverFor(places, dataFolder);
    if (const auto answer = handover.handOver(words, workingFolder()))
        return print(*answer);
    std::unique_ptr<TWHeldLock> lock;
    if (invocation.changesLists()) {
        dataFolder.make();
        bool busy = false;
        lock = lockLists(system.locks(), dataFolder.file(ListsLock), busy);
        if (busy)
            return print({TWStatus::NothingRun, "", ListsBusy});
        // It may have been a window that held the lock while it began.
        if (const auto answer = handover.handOver(words, workingFolder()))
            return print(*answer);
    }
    // Read only now, so that nothing is lost that another command has written meanwhile.
    TWTerminal terminal(invocation);
    TWTidewellAppDelegate delegate(system.platform(terminal), TWLaunchKind::Command);
    delegate.setView(&terminal);
    delegate.prepareForCommand();
    const int status = print(TWRunListCommand(delegate, invocation));
    // A command that failed has said so already.
    if (status == TWStatus::Success)
        delegate.applicationWillTerminate();
    return status;
}

bool hasDisplay()
{
    for (const auto* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* value = std::getenv(variable);
        if (value && *value)
            return true;
    }
    return false;
}

// A command that was handed over, or a second start of the program.
TWCommandResult carryOut(TWWindowSession& session, TWTidewellAppDelegate& delegate, const std::vector<std::string>& words,
    const std::string& workingFolder)
{
    const auto parsed = TWParseCommandLine(words, workingFolder);
    if (!parsed.invocation)
        return {parsed.status, parsed.out, parsed.err};
    TWCommandResult result;
    if (parsed.invocation->concernsLists())
        result = TWRunListCommand(delegate, *parsed.invocation);
    else
        session.activate();
    session.mainWindow().refresh();
    return result;
}

// A window that is told to end does so without a question: it stops a run and waits for its end. Told again, it does not wait.
class EndOnSignal {
public:
    EndOnSignal(TWRunLoop& runLoop, TWTidewellAppDelegate& delegate)
        : runLoop_(runLoop)
        , delegate_(delegate)
    {
    }

    void signalled()
    {
        delegate_.stop();
        if (waiting_ || !delegate_.running()) {
            QCoreApplication::exit(0);
            return;
        }
        waiting_ = runLoop_.every(20ms, [this] {
            if (!delegate_.running())
                QCoreApplication::exit(0);
        });
    }

private:
    TWRunLoop& runLoop_;
    TWTidewellAppDelegate& delegate_;
    std::unique_ptr<TWRunLoopHandle> waiting_;
};

int runWindow(const TWPosixFileSystem& fileSystem, const TWPlaces& places, const TWFileBundle& bundle, const TWDataFolder& dataFolder,
    const std::string& settingsFile, int& argumentCount, char** arguments)
{
    if (!hasDisplay())
        return print({TWStatus::WrongUse, "", NoDisplay});
    QApplication application(argumentCount, arguments);
    auto handover = handoverFor(places, dataFolder);
    if (const auto answer = handover.handOver({}, "/"))
        return print(*answer);
    QApplication::setApplicationDisplayName("Tidewell");
    QApplication::setDesktopFileName(QString::fromStdString(bundle.identifier()));
    System system(fileSystem, places, bundle, settingsFile);
    // From before the lists are read until commands come to this window: none can write in between.
    dataFolder.make();
    bool busy = false;
    auto lock = lockLists(system.locks(), dataFolder.file(ListsLock), busy);
    if (busy)
        return print({TWStatus::NothingRun, "", ListsBusy});
    TWQtAlerts alerts;
    TWTidewellAppDelegate delegate(system.platform(alerts), TWLaunchKind::Window);
    TWWindowSession session(delegate);
    alerts.setWindow(&session.mainWindow());
    EndOnSignal ending(system.runLoop(), delegate);
    const StopSignals stopping(system.runLoop(), [&] { ending.signalled(); });
    if (!handover.listen([&](const auto& words, const auto& folder) { return carryOut(session, delegate, words, folder); })) {
        // Another window has come first, or no socket can be made.
        if (const auto answer = handover.handOver({}, "/"))
            return print(*answer);
        TWLog::write(TWText::fill(NotListening, {dataFolder.path()}));
    }
    lock.reset();
    delegate.applicationDidFinishLaunching();
    TWQtApplicationService service({[&] { session.activate(); }, [&] { session.clean(); }});
    if (!places.sandboxed())
        service.offer(QString::fromStdString(bundle.identifier()));
    const int status = application.exec();
    delegate.applicationWillTerminate();
    return status;
}

// Qt's own warnings, less the one that a machine without a login session gives at every start.
void writeQtMessage(QtMsgType, const QMessageLogContext&, const QString& message)
{
    if (!message.startsWith("QStandardPaths:"))
        TWLog::write(message.toStdString());
}

// "--sandbox=~/x" comes with the tilde, which no shell expands there.
void expandHome(std::string& path)
{
    if (path.starts_with('~') || path.starts_with('$'))
        path = TWLinuxPlaces().standardize(path);
}

// The sandbox's root as a real path, made when missing; nothing when that fails.
std::optional<std::string> sandboxRoot(const TWFileSystem& fileSystem, const std::string& folder)
{
    int error = fileSystem.makeFolders(folder + "/home");
    const auto root = fileSystem.realPath(folder + "/.");
    if (error == 0 && root)
        return root;
    print({TWStatus::Failure, "", TWText::fill(NoSandbox, {folder, TWErrorText(error)})});
    return std::nullopt;
}

// A link on the way to what is read and written in a sandbox that leads out of it, or nobody knows where; "" when there is none.
std::string linkOutOfSandbox(const TWPlaces& places, const TWDataFolder& dataFolder, const std::string& settingsFile)
{
    if (!places.sandboxed())
        return "";
    for (std::string path : {places.home, settingsFile, dataFolder.file("FilesRules.plist"), dataFolder.file("Dictionary.plist")}) {
        for (std::error_code error; path.size() > places.sandboxRoot.size(); path = TWPath::parent(path)) {
            if (std::filesystem::is_symlink(path, error)
                && !TWPath::isAtOrBelow(std::filesystem::canonical(path, error).string(), places.sandboxRoot))
                return path;
        }
    }
    return "";
}

// The folder of the demonstration, or nothing after having said why.
std::optional<std::string> demoFolder(const TWFileSystem& fileSystem, const std::string& wanted)
{
    if (wanted.empty()) {
        std::string folder = TWLinuxPlaces().temporaryFolder + "/tidewell-demo-XXXXXX";
        if (mkdtemp(folder.data()))
            return folder;
        print({TWStatus::Failure, "", TWText::fill(NoSandbox, {folder, TWErrorText(errno)})});
        return std::nullopt;
    }
    const auto open = fileSystem.openFolder(wanted, TWLinkAtEnd::Follow);
    if (fileSystem.exists(wanted) && (!open || !open->entries().empty())) {
        print({TWStatus::WrongUse, "", TWText::fill(DemoNotEmpty, {wanted})});
        return std::nullopt;
    }
    return wanted;
}

}

int main(int argumentCount, char** arguments)
{
    fillStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN);
    qInstallMessageHandler(writeQtMessage);
    const std::vector<std::string> words(arguments + std::min(argumentCount, 1), arguments + argumentCount);
    auto parsed = TWParseCommandLine(words, workingFolder());
    if (!parsed.invocation)
        return print({parsed.status, parsed.out, parsed.err});
    auto& invocation = *parsed.invocation;

    const TWPosixFileSystem fileSystem;
    const bool demo = invocation.command == Command::Demo;
    if (invocation.sandbox)
        expandHome(*invocation.sandbox);
    if (demo)
        expandHome(invocation.path);
    if (demo && !(invocation.sandbox = demoFolder(fileSystem, invocation.path)))
        return invocation.path.empty() ? TWStatus::Failure : TWStatus::WrongUse;
    std::string root;
    if (invocation.sandbox) {
        if (!TWText::isValidUTF8(*invocation.sandbox))
            return print({TWStatus::WrongUse, "", TWText::fill(NotUTF8, {TWText::oneLine(*invocation.sandbox)})});
        const auto made = sandboxRoot(fileSystem, *invocation.sandbox);
        if (!made)
            return TWStatus::Failure;
        root = *made;
    }
    const auto places = root.empty() ? TWLinuxPlaces() : TWLinuxSandboxPlaces(root);
    const TWFileBundle bundle(fileSystem, places.resources);
    const TWDataFolder dataFolder(fileSystem, places, bundle);
    const auto settingsFile = places.configHome + SettingsFile;
    if (invocation.command == Command::Paths)
        return print(TWPrintPaths(places, dataFolder.path(), settingsFile, invocation.json));
    // The settings file could not be reached.
    if (!TWText::isValidUTF8(settingsFile))
        return print({root.empty() ? TWStatus::Failure : TWStatus::WrongUse, "", TWText::fill(NotUTF8, {TWText::oneLine(places.configHome)})});
    if (const auto link = linkOutOfSandbox(places, dataFolder, settingsFile); !link.empty())
        return print({TWStatus::WrongUse, "", TWText::fill(SandboxLeaks, {root, TWText::oneLine(link)})});
    if (demo) {
        if (const auto problem = TWMakeDemoWorld(fileSystem, places, dataFolder.path(), settingsFile); !problem.empty())
            return print({TWStatus::Failure, "", problem + "\n"});
        if (!invocation.json)
            print({0, TWText::fill(DemoPlace, {root}), ""});
    }
    const auto stopping = stopSignals();
    if (!invocation.concernsLists())
        pthread_sigmask(SIG_BLOCK, &stopping, nullptr);
    if (invocation.command == Command::Window)
        return runWindow(fileSystem, places, bundle, dataFolder, settingsFile, argumentCount, arguments);
    QCoreApplication application(argumentCount, arguments);
    System system(fileSystem, places, bundle, settingsFile);
    if (invocation.concernsLists())
        return runListCommand(system, places, invocation, dataFolder, words);
    const int status = runClean(system, invocation, application);
    if (demo && !invocation.json)
        print({0, TWText::fill(DemoLeft, {root}), ""});
    return status;
}
