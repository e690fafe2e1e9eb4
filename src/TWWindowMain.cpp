// tidewell-window: makes the platform and the views and hands both to the delegate. Started by `tidewell`.

#include "TWSystem.h"
#include "app/TWTidewellAppDelegate.h"
#include "cli/TWCommandLine.h"
#include "cli/TWCommandRunner.h"
#include "cli/TWSandbox.h"
#include "cli/TWTerminal.h"
#include "platform/qt/TWQtApplicationService.h"
#include "platform/qt/TWQtFileManager.h"
#include "platform/qt/TWQtNotifier.h"
#include "platform/qt/TWQtTaskBar.h"
#include "support/TWLog.h"
#include "support/TWText.h"
#include "ui/windows/TWQtAlerts.h"
#include "ui/windows/TWWindowSession.h"

#include <QApplication>
#include <QDesktopServices>

namespace {

using namespace std::chrono_literals;

constexpr auto NoDisplay
    = "There is no display for a window. Try \"tidewell clean\", \"tidewell demo\" or \"tidewell --help\".\n";
constexpr auto NotListening = "Tidewell: commands cannot reach this window (no socket could be made in %@). Please do "
                              "not change lists with commands while it is open.";

// Carries out a command that was handed over. An empty command line comes from a second start of the program.
TWCommandResult carryOut(const TWWorld& world, TWWindowSession& session, TWTidewellAppDelegate& delegate,
    const std::vector<std::string>& words, const std::string& workingFolder)
{
    const auto parsed = TWParseCommandLine(words, workingFolder);
    if (!parsed.invocation)
        return parsed.result;
    TWCommandResult result;
    if (parsed.invocation->row->kind == TWCommandKind::ChangesLists)
        result = TWRunCommand({ world.host, world.places, world.dataFolder, &delegate }, *parsed.invocation);
    else
        session.activate();
    session.refresh();
    return result;
}

// Quits on SIGINT, SIGTERM and SIGHUP. A run is stopped without a question, and its end is waited for. If there are
// edits that are not saved, the window asks. A second signal neither waits nor asks.
class EndOnSignal {
public:
    EndOnSignal(TWRunLoop& runLoop, TWTidewellAppDelegate& delegate, TWWindowSession& session)
        : runLoop_(runLoop)
        , delegate_(delegate)
        , session_(session)
    {
    }

    void signalled()
    {
        delegate_.stop();
        if (waiting_) {
            QCoreApplication::exit(0);
            return;
        }
        waiting_ = runLoop_.every(20ms, [this] {
            if (!delegate_.running() && !std::exchange(asked_, true) && !session_.askedBeforeEnd())
                QCoreApplication::exit(0);
        });
    }

private:
    TWRunLoop& runLoop_;
    TWTidewellAppDelegate& delegate_;
    TWWindowSession& session_;
    std::unique_ptr<TWRunLoopHandle> waiting_;
    bool asked_ = false;
};

int runWindow(const TWWorld& world, int& argumentCount, char** arguments)
{
    // If a window is running already, brings it forward instead of opening another one.
    world.dataFolder.make();
    if (const auto answer = world.host.makeHandover(world.places, world.dataFolder.path())->handOver({}, "/"))
        return TWPrint(*answer);
    // Only now, so that a signal ends a start that waits for another window.
    world.host.holdEndRequests();
    QApplication application(argumentCount, arguments);
    QApplication::setApplicationDisplayName("Tidewell");
    QApplication::setDesktopFileName(QString::fromStdString(world.bundle.identifier()));
    TWSystem system(world, std::make_unique<TWQtNotifier>());
    // Held from before the lists are read until this window accepts commands, so that no command writes them in
    // between.
    auto locked = TWLockLists(*world.host.makeLocks(), world.dataFolder);
    if (const auto refusal = TWRefusalOfLists(locked, world.dataFolder); !refusal.empty())
        return TWPrint({ TWStatus::NothingRun, "", refusal });
    TWQtAlerts alerts;
    TWTidewellAppDelegate delegate(system.platform(alerts), TWLaunchKind::Window);
    TWQtTaskBar taskBar(QString::fromStdString(world.bundle.identifier()));
    TWQtFileManager fileManager(QDesktopServices::openUrl);
    TWWindowSession session(delegate, alerts, fileManager);
    EndOnSignal ending(system.runLoop(), delegate, session);
    const auto endRequests = world.host.whenToldToEnd(system.runLoop(), [&] { ending.signalled(); });
    const auto handover = world.host.makeHandover(world.places, world.dataFolder.path());
    if (!handover->listen(system.runLoop(),
            [&](const auto& words, const auto& folder) { return carryOut(world, session, delegate, words, folder); })) {
        // Another window has just started to listen, or no socket can be made.
        if (const auto answer = handover->handOver({}, "/"))
            return TWPrint(*answer);
        TWLog::write(TWText::fill(NotListening, { world.dataFolder.path() }));
    }
    locked.lock.reset();
    if (!world.places.sandboxed()) {
        QObject::connect(
            &session.mainWindow(), &TWMainWindow::progressed, [&](double done) { taskBar.showProgress(done); });
        QObject::connect(&session.mainWindow(), &TWMainWindow::progressEnded, [&] { taskBar.clearProgress(); });
    }
    delegate.applicationDidFinishLaunching();
    TWQtApplicationService service({ [&] { session.activate(); }, [&] { session.clean(); } });
    if (!world.places.sandboxed())
        service.offer(QString::fromStdString(world.bundle.identifier()));
    const int status = application.exec();
    delegate.applicationWillTerminate();
    system.exitIfWorkHangs([&] { return status; });
    return status;
}

}

int main(int argumentCount, char** arguments)
{
    const auto host = TWMakeHost();
    TWPrepareProcess(*host);
    const std::vector<std::string> words(arguments + std::min(argumentCount, 1), arguments + argumentCount);
    const auto parsed = TWParseCommandLine(words, TWWorkingFolder());
    if (!parsed.invocation)
        return TWPrint(parsed.result);
    std::string notInstalled;
    const auto bundle = TWInstalledBundle(*host, notInstalled);
    if (!bundle)
        return TWPrint({ TWStatus::Failure, "", notInstalled });
    TWCommandResult problem;
    const auto places = TWPlacesFor(*parsed.invocation, *host, problem);
    if (!places)
        return TWPrint(problem);
    const TWWorld world(*host, *bundle, *places);
    problem.err = TWProblemOfPlaces(*host, *places, world.dataFolder.path());
    if (!problem.err.empty())
        return TWPrint({ places->sandboxed() ? TWStatus::WrongUse : TWStatus::Failure, "", problem.err });
    if (!host->hasDisplay())
        return TWPrint({ TWStatus::WrongUse, "", NoDisplay });
    TWLeaveWorkingFolder();
    return runWindow(world, argumentCount, arguments);
}
