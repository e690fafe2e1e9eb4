// Parses the command line and carries it out; the window is a program of its own, since loading its libraries takes
// longer than most commands.

#include "TWSystem.h"
#include "cli/TWCleanCommand.h"
#include "cli/TWCommands.h"
#include "cli/TWDemo.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdlib>
#include <unistd.h>

namespace {

using Command = TWInvocation::Command;

constexpr auto NoWindow
    = "The program of the window, \"%@\", could not be started (%@). Please install Tidewell again.\n";
constexpr auto DemoNotMade = "The folder \"%@\" for the demonstration could not be made (%@). Please name one.\n";
constexpr auto DemoNotEmpty
    = "The folder \"%@\" is not empty. Please name a new or an empty one for the demonstration.\n";
constexpr auto DemoPlace
    = "Tidewell makes a world of its own under %@ and cleans it. Nothing outside of it is touched.\n\n";
constexpr auto DemoLeft = "\nHave a look at what is left: find %@/home. Delete the folder when you like.\n";

int runClean(TWSystem& system, const TWInvocation& invocation, QCoreApplication& application)
{
    TWTerminal terminal(invocation);
    TWTidewellAppDelegate delegate(system.platform(terminal), TWLaunchKind::Command);
    TWCleanCommand command(delegate, terminal, invocation);
    const TWStopSignals stopping(system.runLoop(), [&] { command.interrupt(); });
    int status = -1;
    command.start([&](int ended) {
        status = ended;
        application.exit(ended);
    });
    // A run can be over before the event loop has begun.
    return status >= 0 ? status : application.exec();
}

int runListCommand(
    TWSystem& system, const TWWorld& world, const TWInvocation& invocation, const std::vector<std::string>& words)
{
    const auto handover = system.handover();
    if (const auto answer = handover.handOver(words, TWWorkingFolder()))
        return TWPrint(*answer);
    std::unique_ptr<TWHeldLock> lock;
    if (invocation.changesLists()) {
        world.dataFolder.make();
        bool busy = false;
        lock = system.lockLists(busy);
        if (busy)
            return TWPrint({ TWStatus::NothingRun, "", TWListsBusy });
        // It may have been a window that held the lock while it began.
        if (const auto answer = handover.handOver(words, TWWorkingFolder()))
            return TWPrint(*answer);
    }
    // Read only now, so that nothing is lost that another command has written meanwhile.
    TWTerminal terminal(invocation);
    TWTidewellAppDelegate delegate(system.platform(terminal), TWLaunchKind::Command);
    delegate.setViews(&terminal, &terminal);
    delegate.prepareForCommand();
    const int status = TWPrint(TWRunListCommand(delegate, invocation));
    // A command that failed has said so already.
    if (status == TWStatus::Success)
        delegate.applicationWillTerminate();
    return status;
}

// The folder of the demonstration, or nothing after having said why.
std::optional<std::string> demoFolder(const TWFileSystem& fileSystem, const std::string& wanted)
{
    if (wanted.empty()) {
        std::string folder = TWLinuxPlaces().temporaryFolder + "/tidewell-demo-XXXXXX";
        if (mkdtemp(folder.data()))
            return folder;
        TWPrint({ TWStatus::Failure, "", TWText::fill(DemoNotMade, { folder, TWErrorText(errno) }) });
        return std::nullopt;
    }
    int error = 0;
    const auto real = fileSystem.realPath(wanted, TWLinkAtEnd::Follow);
    const auto open = real ? fileSystem.openFolder(*real, error) : nullptr;
    if (fileSystem.look(wanted).isThere() && (!open || !open->entries().empty())) {
        TWPrint({ TWStatus::WrongUse, "", TWText::fill(DemoNotEmpty, { wanted }) });
        return std::nullopt;
    }
    return wanted;
}

// Goes on as the program of the window, with the same words.
int becomeWindow(char** arguments)
{
    const auto program = std::string(TWPath::parent(TWLinuxPlaces().srm)) + "/tidewell-window";
    execv(program.c_str(), arguments);
    return TWPrint({ TWStatus::Failure, "", TWText::fill(NoWindow, { program, TWErrorText(errno) }) });
}

}

int main(int argumentCount, char** arguments)
{
    TWPrepareProcess();
    const std::vector<std::string> words(arguments + std::min(argumentCount, 1), arguments + argumentCount);
    auto parsed = TWParseCommandLine(words, TWWorkingFolder());
    if (!parsed.invocation)
        return TWPrint({ parsed.status, parsed.out, parsed.err });
    auto& invocation = *parsed.invocation;
    if (invocation.command == Command::Window)
        return becomeWindow(arguments);

    const bool demo = invocation.command == Command::Demo;
    if (demo) {
        TWExpandHome(invocation.path);
        invocation.sandbox = demoFolder(TWLinuxFileSystem(), invocation.path);
        if (!invocation.sandbox)
            return invocation.path.empty() ? TWStatus::Failure : TWStatus::WrongUse;
    }
    int status = 0;
    const auto places = TWPlacesFor(invocation, status);
    if (!places)
        return status;
    const TWWorld world(*places);
    if (invocation.command == Command::Paths)
        return TWPrint(TWPrintPaths(world.places, world.dataFolder.path(), world.settingsFile, invocation.json));
    if (const auto problem = world.problem(); !problem.empty())
        return TWPrint({ invocation.sandbox ? TWStatus::WrongUse : TWStatus::Failure, "", problem });
    if (demo) {
        if (const auto problem
            = TWMakeDemoWorld(world.ownFiles, world.places, world.dataFolder.path(), world.settingsFile);
            !problem.empty())
            return TWPrint({ TWStatus::Failure, "", problem + "\n" });
        if (!invocation.json)
            TWPrint({ 0, TWText::fill(DemoPlace, { world.places.sandboxRoot }), "" });
    }
    if (!invocation.concernsLists())
        TWBlockStopSignals();
    QCoreApplication application(argumentCount, arguments);
    TWSystem system(world);
    if (invocation.concernsLists())
        return runListCommand(system, world, invocation, words);
    status = runClean(system, invocation, application);
    if (demo && !invocation.json)
        TWPrint({ 0, TWText::fill(DemoLeft, { world.places.sandboxRoot }), "" });
    return status;
}
