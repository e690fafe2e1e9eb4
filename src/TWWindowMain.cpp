// The program of the window: builds the platform and the views, hands both to the delegate. `tidewell` starts it.

#include "TWSystem.h"
#include "app/TWTidewellAppDelegate.h"
#include "cli/TWCommands.h"
#include "platform/qt/TWQtApplicationService.h"
#include "support/TWLog.h"
#include "support/TWText.h"
#include "ui/windows/TWQtAlerts.h"
#include "ui/windows/TWWindowSession.h"

#include <QApplication>

#include <cstdlib>

namespace {

using namespace std::chrono_literals;

constexpr auto NoDisplay
    = "There is no display for a window. Try \"tidewell clean\", \"tidewell demo\" or \"tidewell --help\".\n";
constexpr auto NotListening = "Tidewell: commands cannot reach this window (no socket could be made in %@). Please do "
                              "not change lists with commands "
                              "while it is open.";

bool hasDisplay()
{
    for (const auto* variable : { "DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM" }) {
        const char* value = std::getenv(variable);
        if (value && *value)
            return true;
    }
    return false;
}

// A command that was handed over, or a second start of the program.
TWCommandResult carryOut(TWWindowSession& session, TWTidewellAppDelegate& delegate,
    const std::vector<std::string>& words, const std::string& workingFolder)
{
    const auto parsed = TWParseCommandLine(words, workingFolder);
    if (!parsed.invocation)
        return { parsed.status, parsed.out, parsed.err };
    TWCommandResult result;
    if (parsed.invocation->concernsLists())
        result = TWRunListCommand(delegate, *parsed.invocation);
    else
        session.activate();
    session.mainWindow().refresh();
    return result;
}

// A window that is told to end does so without a question: it stops a run and waits for its end. Told again, it does
// not wait.
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

int runWindow(const TWWorld& world, int& argumentCount, char** arguments)
{
    QApplication application(argumentCount, arguments);
    QApplication::setApplicationDisplayName("Tidewell");
    QApplication::setDesktopFileName(QString::fromStdString(world.bundle.identifier()));
    TWSystem system(world);
    auto handover = system.handover();
    if (const auto answer = handover.handOver({}, "/"))
        return TWPrint(*answer);
    // From before the lists are read until commands come to this window: none can write in between.
    world.dataFolder.make();
    bool busy = false;
    auto lock = system.lockLists(busy);
    if (busy)
        return TWPrint({ TWStatus::NothingRun, "", TWListsBusy });
    TWQtAlerts alerts;
    TWTidewellAppDelegate delegate(system.platform(alerts), TWLaunchKind::Window);
    TWWindowSession session(delegate, alerts);
    EndOnSignal ending(system.runLoop(), delegate);
    const TWStopSignals stopping(system.runLoop(), [&] { ending.signalled(); });
    if (!handover.listen(
            [&](const auto& words, const auto& folder) { return carryOut(session, delegate, words, folder); })) {
        // Another window has come first, or no socket can be made.
        if (const auto answer = handover.handOver({}, "/"))
            return TWPrint(*answer);
        TWLog::write(TWText::fill(NotListening, { world.dataFolder.path() }));
    }
    lock.reset();
    delegate.applicationDidFinishLaunching();
    TWQtApplicationService service({ [&] { session.activate(); }, [&] { session.clean(); } });
    if (!world.places.sandboxed())
        service.offer(QString::fromStdString(world.bundle.identifier()));
    const int status = application.exec();
    delegate.applicationWillTerminate();
    return status;
}

}

int main(int argumentCount, char** arguments)
{
    TWPrepareProcess();
    const std::vector<std::string> words(arguments + std::min(argumentCount, 1), arguments + argumentCount);
    const auto parsed = TWParseCommandLine(words, TWWorkingFolder());
    if (!parsed.invocation)
        return TWPrint({ parsed.status, parsed.out, parsed.err });
    int status = 0;
    const auto places = TWPlacesFor(*parsed.invocation, status);
    if (!places)
        return status;
    const TWWorld world(*places);
    if (const auto problem = world.problem(); !problem.empty())
        return TWPrint({ places->sandboxed() ? TWStatus::WrongUse : TWStatus::Failure, "", problem });
    if (!hasDisplay())
        return TWPrint({ TWStatus::WrongUse, "", NoDisplay });
    TWBlockStopSignals();
    return runWindow(world, argumentCount, arguments);
}
