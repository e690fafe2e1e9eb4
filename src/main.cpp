// tidewell: parses the command line and carries it out. The window is a separate program, because loading its libraries
// takes longer than most commands.

#include "TWSystem.h"
#include "cli/TWCommandLine.h"
#include "cli/TWCommandRunner.h"
#include "cli/TWPathArgument.h"
#include "cli/TWSandbox.h"
#include "cli/TWTerminal.h"
#include "platform/qt/TWPluggedNotifier.h"
#include "support/TWText.h"

#include <QCoreApplication>

namespace {

constexpr auto NoWindow
    = "The program of the window, \"%@\", could not be started (%@). Please install Tidewell again.\n";

TWCommandResult becomeWindow(const TWHost& host, char** arguments)
{
    const auto program = host.places().window;
    const int error = host.becomeProgram(program, arguments);
    return { TWStatus::Failure, "", TWText::fill(NoWindow, { TWText::oneLine(program), TWErrorText(error) }) };
}

// Loads settings and lists in this process and runs the command on them.
TWCommandResult runHere(const TWWorld& world, const TWInvocation& invocation, int& argumentCount, char** arguments)
{
    QCoreApplication application(argumentCount, arguments);
    TWSystem system(world, std::make_unique<TWPluggedNotifier>(world.places.notifier));
    TWTerminal terminal(invocation.json ? TWOutputFormat::JSON : TWOutputFormat::Lines, system.runLoop());
    TWTidewellAppDelegate delegate(system.platform(terminal), TWLaunchKind::Command);
    terminal.attach(delegate);
    delegate.prepareForCommand();
    auto result = TWRunCommand({ world.host, world.places, world.dataFolder, &delegate, &terminal }, invocation);
    // A command that could not save its change has reported that already.
    if (result.status == TWStatus::Success || invocation.row->kind != TWCommandKind::ChangesLists)
        delegate.applicationWillTerminate();
    system.exitIfWorkHangs([&] { return TWPrint(result); });
    return result;
}

// A path on a volume that does not answer holds up this process here, and not the window that makes the change.
void lookAtPaths(const TWWorld& world, const TWInvocation& invocation)
{
    for (const auto& argument : invocation.row->arguments) {
        if (argument.kind == TWArgument::Kind::Path && invocation.has(argument.name)) {
            const auto path = TWReadPathArgument(world.host.fileSystem(), world.places, invocation.text(argument.name));
            world.host.fileSystem().look(path.path);
        }
    }
}

TWCommandResult run(const TWWorld& world, const TWInvocation& invocation, int& argumentCount, char** arguments,
    const std::vector<std::string>& words, const std::string& workingFolder)
{
    const auto kind = invocation.row->kind;
    if (kind == TWCommandKind::NeedsPlaces)
        return TWRunCommand({ world.host, world.places, world.dataFolder }, invocation);
    if (auto problem = TWProblemOfPlaces(world.host, world.places, world.dataFolder.path()); !problem.empty())
        return { world.places.sandboxed() ? TWStatus::WrongUse : TWStatus::Failure, "", problem };
    const auto here = [&] { return runHere(world, invocation, argumentCount, arguments); };
    if (kind == TWCommandKind::ChangesLists) {
        lookAtPaths(world, invocation);
        const auto handover = world.host.makeHandover(world.places, world.dataFolder.path());
        return TWChangeLists(*handover, *world.host.makeLocks(), world.dataFolder, { words, workingFolder, here });
    }
    if (kind != TWCommandKind::Reads)
        world.host.holdEndRequests();
    return here();
}

}

int main(int argumentCount, char** arguments)
{
    const auto host = TWMakeHost();
    TWPrepareProcess(*host);
    const std::vector<std::string> words(arguments + std::min(argumentCount, 1), arguments + argumentCount);
    const auto workingFolder = TWWorkingFolder();
    const auto parsed = TWParseCommandLine(words, workingFolder);
    if (!parsed.invocation)
        return TWPrint(parsed.result);
    std::string notInstalled;
    const auto bundle = TWInstalledBundle(*host, notInstalled);
    if (!bundle)
        return TWPrint({ TWStatus::Failure, "", notInstalled });
    if (parsed.invocation->row->kind == TWCommandKind::OpensWindow)
        return TWPrint(becomeWindow(*host, arguments));
    TWCommandResult problem;
    const auto places = TWPlacesFor(*parsed.invocation, *host, problem);
    if (!places)
        return TWPrint(problem);
    const TWWorld world(*host, *bundle, *places);
    TWLeaveWorkingFolder();
    return TWPrint(run(world, *parsed.invocation, argumentCount, arguments, words, workingFolder));
}
