#include "TWLocationEjector.h"

#include "TWEjectReport.h"
#include "TWHolders.h"
#include "platform/linux/TWLinuxPlaces.h"

#include <algorithm>
#include <thread>

namespace {

constexpr char Unknown[] = "\"%@\" is not unmounted: the service gvfs does not tell what is open there";
constexpr char NotTold[] = "gvfs does not tell any more whether \"%@\" is open";
constexpr char Answered[] = "gvfs: %@";
constexpr char NoAnswer[] = "it did not answer in time";
constexpr char NoEffect[] = "it did not object, but the volume is still open";

// Together they are less than the time for the whole.
constexpr TWDeadline::Duration LookingTime{ 3'000 };
constexpr TWDeadline::Duration PlainTime{ 20'000 };
constexpr TWDeadline::Duration ForcedTime{ 8'000 };
constexpr TWDeadline::Duration GoingTime{ 5'000 }; // the service answers before the location has left its list
constexpr TWDeadline::Duration BetweenLooks{ 100 };

}

TWLocationEjector::TWLocationEjector(std::string path, TWDeadline::Duration total)
    : path_(std::move(path))
    , deadline_(total)
    , locations_(TWLinuxPlaces().desktop, LookingTime)
{
}

std::optional<TWEjector::Result> TWLocationEjector::eject()
{
    const auto mounts = TWLinuxReadMounts();
    if (!TWLinuxLocations::mayBeAt(path_, mounts))
        return std::nullopt;
    const auto found = locations_.look(mounts);
    const auto at = std::find_if(
        found.volumes.begin(), found.volumes.end(), [this](const auto& volume) { return volume.path == path_; });
    if (at != found.volumes.end()) {
        volume_ = *at;
        TWReportHolders(volume_, deadline_.left(LookingTime));
        const bool isClosed
            = close(TWLinuxDesktop::Force::No, PlainTime) || close(TWLinuxDesktop::Force::Yes, ForcedTime);
        return isClosed ? TWEjector::Result::Unmounted : TWEjector::Result::Mounted;
    }
    if (found.unknownFolders.empty())
        return std::nullopt;
    TWReport(Unknown, { path_ });
    return TWEjector::Result::Mounted;
}

// Only what the list says afterwards counts.
bool TWLocationEjector::close(TWLinuxDesktop::Force force, TWDeadline::Duration longest)
{
    const auto answer = locations_.close(volume_, force, deadline_.left(longest)).value_or(NoAnswer);
    const TWDeadline deadline(answer.empty() ? deadline_.left(GoingTime) : BetweenLooks);
    auto gone = isGone();
    for (; !gone.value_or(false) && !deadline.isOver(); gone = isGone())
        std::this_thread::sleep_for(BetweenLooks);
    if (gone.value_or(false))
        return true;
    TWReport(Answered, { answer.empty() ? NoEffect : answer });
    if (!gone)
        TWReport(NotTold, { path_ });
    return false;
}

// Nothing if the service does not tell. One that was started anew may show the location in another mount.
std::optional<bool> TWLocationEjector::isGone()
{
    const auto found = locations_.look(TWLinuxReadMounts());
    if (!found.unknownFolders.empty())
        return std::nullopt;
    return std::none_of(found.volumes.begin(), found.volumes.end(), [this](const auto& volume) {
        return volume.service == volume_.service && volume.serviceObject == volume_.serviceObject;
    });
}
