#include "TWSystem.h"

#include "support/TWLog.h"
#include "support/TWText.h"

#include <QString>

#include <cstdlib>
#include <filesystem>

namespace {

class SilentNotifier final : public TWNotifier {
public:
    void post(const TWNotification&) override { }
    void setClicked(std::function<void()>) override { }
};

constexpr TWRunLoop::Duration PatienceWithWork{ 2000 }; // cancelled work usually ends within milliseconds

constexpr auto NotInstalled
    = "Tidewell is not completely installed: \"%@\" is missing or damaged. Please install Tidewell again.\n";

// Passes Qt's warnings on, except one that Qt prints at every start without a login session.
void writeQtMessage(QtMsgType, const QMessageLogContext&, const QString& message)
{
    if (!message.startsWith("QStandardPaths:"))
        TWLog::write(message.toStdString());
}

}

void TWPrepareProcess(const TWHost& host)
{
    host.prepareProcess();
    qInstallMessageHandler(writeQtMessage);
}

std::optional<TWFileBundle> TWInstalledBundle(const TWHost& host, std::string& problem)
{
    problem = host.problemOfPlaces();
    if (!problem.empty())
        return std::nullopt;
    TWFileBundle bundle(host.ownFiles(), host.places().resources);
    const TWDataFolder dataFolder(host.ownFiles(), host.places(), bundle);
    if (!bundle.identifier().empty() && dataFolder.path().starts_with('/'))
        return bundle;
    problem = TWText::fill(NotInstalled, { TWText::oneLine(bundle.resourcePath("Info.plist")) });
    return std::nullopt;
}

std::string TWWorkingFolder()
{
    std::error_code error;
    const auto folder = std::filesystem::current_path(error);
    return error ? "" : folder.string();
}

void TWLeaveWorkingFolder()
{
    std::error_code error;
    std::filesystem::current_path("/", error);
}

TWWorld::TWWorld(const TWHost& givenHost, const TWBundle& installed, const TWPlaces& where)
    : host(givenHost)
    , places(where)
    , bundle(installed)
    , dataFolder(host.ownFiles(), places, bundle)
{
}

TWSystem::TWSystem(const TWWorld& world, std::unique_ptr<TWNotifier> notifier)
    : world_(world)
    , launcher_(world.host.makeLauncher(runLoop_))
    , mountTable_(world.host.makeMountTable())
    , locks_(world.host.makeLocks())
    , userDefaults_(world.host.ownFiles(), runLoop_, world.places.settingsFile())
    , notifier_(world.places.sandboxed() ? std::make_unique<SilentNotifier>() : std::move(notifier))
    , applications_(world.host.makeApplications(world.places))
    , volumes_(world.host.makeVolumes(world.places))
    , workspace_(world.host.makeWorkspace(world.places))
{
}

void TWSystem::exitIfWorkHangs(const std::function<int()>& status)
{
    if (!runLoop_.endBackgroundWork(PatienceWithWork))
        std::_Exit(status());
}

TWPlatform TWSystem::platform(TWAlerts& alerts)
{
    return { runLoop_, *launcher_, world_.host.fileSystem(), world_.host.ownFiles(), *mountTable_, world_.places,
        userDefaults_, world_.bundle, *locks_, alerts, *notifier_, *applications_, *workspace_,
        world_.host.preferenceFiles(), world_.host.folderWatcher(), world_.host.logSources(), world_.host.openFiles(),
        *volumes_ };
}
