#include "TWEjector.h"

#include "TWBoundedChild.h"
#include "TWEjectReport.h"
#include "TWFuseWay.h"
#include "TWHolders.h"
#include "TWRootWay.h"
#include "TWUDisksWay.h"
#include "TWUserWay.h"
#include "platform/linux/TWLinuxPlaces.h"
#include "platform/linux/TWLinuxSystemMounts.h"
#include "platform/linux/TWLinuxVolumeUse.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr char Refused[] = "\"%@\" is not unmounted: %@";
constexpr char ChangedMeanwhile[] = "\"%@\" is not unmounted: something else is mounted there now";
constexpr char Answered[] = "%@: %@";
constexpr char NoEffect[] = "it did not object, but the volume is still mounted";
constexpr char NotWrittenOut[] = "warning: what was not yet written to \"%@\" could not be written, and may be lost";
constexpr char HasDiskImage[] = "\"%@\" is not unmounted: a disk image on it (%@) is in use";
constexpr char StillInUse[] = "\"%@\" is detached, but %@ is still in use";
constexpr char MayBeInUse[] = "\"%@\" is detached, but %@ may still be in use: only root is told whether it is";

// The longest times of the stages. Together they are less than the time for the whole, so that the later ones are
// reached.
constexpr TWDeadline::Duration PlainTime{ 25'000 }; // includes that in which a password is typed
constexpr TWDeadline::Duration WritingTime{ 8'000 };
constexpr TWDeadline::Duration LazyTime{ 8'000 };
constexpr TWDeadline::Duration FreeingTime{ 10'000 };
constexpr TWDeadline::Duration LookingTime{ 5'000 };
constexpr TWDeadline::Duration BetweenLooks{ 100 };

}

TWEjector::TWEjector(std::string path, TWDeadline::Duration total)
    : path_(std::move(path))
    , deadline_(total)
    , neededPaths_(TWLinuxNeededPaths(TWLinuxPlaces()))
{
}

TWEjector::Result TWEjector::eject()
{
    const auto judged = TWJudgeMount(path_, neededPaths_);
    if (!judged.objection.empty()) {
        TWReport(Refused, { path_, judged.objection });
        return Result::Mounted;
    }
    volume_ = TWLinuxVolumeOf(judged.mount);
    wasListed_ = TWLinuxBlockDevice::isListed(TWLinuxBlockDevice::number(volume_.deviceNumber, volume_.device));
    findWays(judged.mount);
    if (!unmount(TWUnmountKind::Plain, PlainTime) && !detach())
        return Result::Mounted;
    if (isOnlyDetached_ && !waitUntilFree())
        return Result::StillInUse;
    for (const auto& way : ways_)
        way->release(deadline_);
    return Result::Unmounted;
}

bool TWEjector::detach()
{
    TWReportHolders(volume_, deadline_.left(LookingTime));
    if (hasDiskImages())
        return false;
    const bool isWritten = writeOut();
    if (!unmount(TWUnmountKind::Lazy, LazyTime))
        return false;
    if (!isWritten && !isOnDevice()) // a device is waited for until all is written
        TWReport(NotWrittenOut, { path_ });
    return true;
}

// After the volume has been detached, the system does not tell any more that they are on it.
bool TWEjector::hasDiskImages() const
{
    for (const auto& image : TWLinuxBlockDevice::diskImages()) {
        if (!TWPath::isAtOrBelow(image.path, path_))
            continue;
        TWReport(HasDiskImage, { path_, image.device });
        return true;
    }
    return false;
}

void TWEjector::findWays(const TWLinuxMount& mount)
{
    ways_.push_back(std::make_unique<TWUDisksWay>(deadline_));
    ways_.push_back(std::make_unique<TWFuseWay>());
    ways_.push_back(std::make_unique<TWUserWay>());
    ways_.push_back(std::make_unique<TWRootWay>());
    std::erase_if(ways_, [&](const auto& way) { return !way->applies(mount); });
}

bool TWEjector::unmount(TWUnmountKind kind, TWDeadline::Duration longest)
{
    const TWDeadline deadline(deadline_.left(longest));
    return std::any_of(
        ways_.begin(), ways_.end(), [&](const auto& way) { return unmountBy(*way, kind, deadline.left(longest)); });
}

bool TWEjector::unmountBy(TWUnmountWay& way, TWUnmountKind kind, TWDeadline::Duration limit)
{
    const auto judged = TWJudgeMount(path_, neededPaths_);
    if (isGone())
        return true;
    if (!judged.objection.empty() || TWLinuxVolumeOf(judged.mount) != volume_) {
        reportOnce(TWText::fill(judged.objection.empty() ? ChangedMeanwhile : Refused, { path_, judged.objection }));
        return false;
    }
    const auto answer = way.unmount(judged, kind, limit);
    // If the answer is late, what was not yet written is being written.
    isOnlyDetached_ = kind == TWUnmountKind::Lazy || !answer.empty();
    if (isGone())
        return true;
    reportOnce(TWText::fill(Answered, { way.name(), answer.empty() ? NoEffect : answer }));
    return false;
}

void TWEjector::reportOnce(const std::string& line)
{
    if (reported_.insert(line).second)
        TWReport("%@", { line });
}

// So that nothing is lost if the medium is pulled out after the mount was only detached.
bool TWEjector::writeOut() const
{
    const auto judged = TWJudgeMount(path_, neededPaths_);
    const auto end = TWRunInChild(
        [&] {
            const int top = openat(
                judged.parent.get(), judged.name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
            return top >= 0 && syncfs(top) == 0 ? 0 : 1;
        },
        deadline_.left(WritingTime));
    return end.isInTime && end.status == 0;
}

bool TWEjector::waitUntilFree()
{
    using enum TWLinuxBlockDevice::Use;
    const TWDeadline deadline(deadline_.left(FreeingTime));
    for (auto found = use(); found != Free; found = use()) {
        if (found != Unknown && !deadline.isOver()) {
            std::this_thread::sleep_for(BetweenLooks);
            continue;
        }
        TWReport(found == Unknown ? MayBeInUse : StillInUse, { path_, volume_.device });
        TWReportHolders(volume_, deadline_.left(LookingTime));
        return false;
    }
    return true;
}

bool TWEjector::isOnDevice() const
{
    return TWLinuxBlockDevice::number(volume_.deviceNumber, volume_.device) != 0;
}

// A look that takes too long counts as one that has found something.
TWLinuxBlockDevice::Use TWEjector::use() const
{
    using enum TWLinuxBlockDevice::Use;
    if (!isOnDevice())
        return Free;
    const auto end = TWRunInChild(
        [this] { return TWLinuxLookForHolders(volume_, {}).isInUse ? 1 : 0; }, deadline_.left(LookingTime));
    if (!end.isInTime || end.status != 0)
        return InUse;
    const auto mounts = TWLinuxReadMounts();
    const bool isElsewhere = std::any_of(mounts.begin(), mounts.end(), [this](const auto& mount) {
        return mount.deviceNumber == volume_.deviceNumber && mount.source == volume_.device;
    });
    if (isElsewhere)
        return Free; // from this volume; the user sees that it is mounted
    const auto found = TWLinuxBlockDevice::use(TWLinuxBlockDevice::number(volume_.deviceNumber, volume_.device));
    return found == Unknown && wasListed_ ? Free : found;
}

bool TWEjector::isGone() const
{
    const auto mounts = TWLinuxReadMounts();
    return !mounts.empty() && std::none_of(mounts.begin(), mounts.end(), [&](const auto& mount) {
        return TWLinuxVolumeOf(mount).isSameMount(volume_);
    });
}
