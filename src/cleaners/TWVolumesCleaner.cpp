#include "cleaners/TWVolumesCleaner.h"

#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <csignal>
#include <map>

namespace {

constexpr auto Started = "Unmounting volumes...";
constexpr auto Success = "All volumes were unmounted.";
constexpr auto Failure = "Some volumes could not be unmounted!";
constexpr auto Unmounting = "Unmounting %@...";
constexpr auto AlreadyUnmounted = "%@ is already unmounted.";

constexpr auto NotListed = "The mounted volumes could not be listed, so nobody knows which of them are there.";
constexpr auto LeftAlone = "%@ was left alone: %@";
constexpr auto SystemVolume = "it belongs to the system, or no file manager shows it.";
constexpr auto OutsideSandbox = "it is not mounted in the sandbox.";
constexpr auto AnotherVolume = "another volume is mounted there by now.";
constexpr auto SilentService = "the service that shows it does not answer, so nobody knows whether it is there.";
constexpr auto UsedBy = "%@ is in use by %@.";
constexpr auto StillUsed = "%@ is not shown any more, but its device is still in use%@. Do not remove it yet.";
constexpr auto MayBeUsed = "%@ is not shown any more, but its device may still be in use. Do not remove it yet.";
constexpr auto StillMounted = "Something is still mounted at \"%@\".";
constexpr auto ByPrograms = " by %@";
constexpr auto HelperSaid = "%@: %@";
constexpr auto TookTooLong = "it did not answer in time.";
constexpr auto NoHelper = "\"%@\" could not be started (%@). Please install Tidewell again.";

constexpr auto WereUnmounted = "%@ unmounted.";
constexpr auto NotUnmounted = "%@ could not be unmounted.";

constexpr auto FreeSpace = "%@ free";
constexpr auto InUseBy = "in use by %@";

// How the helper's lines begin, and then those that explain no failure, and those about a loss.
constexpr std::string_view HelperLine = "eject: ";
constexpr std::string_view Note = "note: ";
constexpr std::string_view Warning = "warning: ";

constexpr int HelperLeftDeviceInUse = 3; // its exit status

constexpr TWRunLoop::Duration LongestLook{ 2000 }; // a volume that does not answer is shown without its facts
constexpr TWRunLoop::Duration LongestUnmount{ 75'000 }; // the helper ends itself before

// A mounted volume in a plan.
struct PlannedVolume final : TWPlannedThing {
    TWVolume volume;
};

const TWVolume& volumeOf(const TWPlan& plan, const TWPlannedItem& item)
{
    return static_cast<const PlannedVolume&>(*plan.thing(item)).volume;
}

std::string programs(const TWVolumeUse& use)
{
    return TWText::join(use.holders, ", ");
}

std::shared_ptr<PlannedVolume> planned(const TWVolumeFacts& facts)
{
    auto thing = std::make_shared<PlannedVolume>();
    thing->volume = facts.volume;
    thing->path = facts.volume.path;
    const auto space = facts.freeBytes ? TWText::fill(FreeSpace, { TWText::size(*facts.freeBytes) }) : "";
    const auto holders = facts.use.holders.empty() ? "" : TWText::fill(InUseBy, { programs(facts.use) });
    thing->details = TWText::join({ holders, space, facts.volume.device }, ", ");
    return thing;
}

// Why the helper has failed: its first line, which comes from the best way of unmounting, without those lines that tell
// something else.
std::string reasonIn(const std::string& output)
{
    for (std::string_view line : TWText::split(output, '\n')) {
        if (line.starts_with(HelperLine))
            line.remove_prefix(HelperLine.size());
        if (!line.empty() && !line.starts_with(Note) && !line.starts_with(Warning))
            return TWText::oneLine(line);
    }
    return "";
}

std::string warningIn(const std::string& output)
{
    const auto beginning = std::string(HelperLine) + std::string(Warning);
    for (const auto& line : TWText::split(output, '\n')) {
        if (line.starts_with(beginning))
            return TWText::oneLine(line.substr(beginning.size()));
    }
    return "";
}

// Differs on purpose: in the order of the list, but a volume that is mounted inside another one comes before that one,
// which could not be unmounted otherwise.
void putInnerFirst(std::vector<const TWVolumesRecord*>& records)
{
    std::vector<const TWVolumesRecord*> ordered;
    for (const auto* record : records) {
        const auto outer = std::find_if(ordered.begin(), ordered.end(), [&](const auto* other) {
            return other->volumePath != record->volumePath
                && TWPath::isAtOrBelow(record->volumePath, other->volumePath);
        });
        ordered.insert(outer, record);
    }
    records = std::move(ordered);
}

// Plans on the main thread, and then looks at the volumes in the background, but not for long.
class Planning final : public TWRunLoopHandle {
public:
    Planning(const TWCleanerContext& context, const TWVolumesCleanerInfo& info, TWCleaner::PlanMade made)
        : context_(context)
        , made_(std::move(made))
    {
        plan_.addProblems(info.problems);
        if (info.volumesArray)
            find(*info.volumesArray);
        ending_
            = context.deletion.runLoop.after(found_.empty() ? TWRunLoop::Duration(0) : LongestLook, [this] { end(); });
        if (!found_.empty())
            look();
    }

private:
    void find(const std::vector<TWVolumesRecord>& records)
    {
        const auto shown = context_.volumes.mountedVolumes();
        const auto mounts = context_.volumes.allMounts();
        if (!shown || !mounts) {
            sayNotListed(records);
            return;
        }
        std::map<std::string_view, const TWVolume*> topmost; // by path
        for (const auto& mount : *mounts)
            topmost[mount.path] = &mount;
        std::vector<const TWVolumesRecord*> mounted;
        for (const auto& record : records) {
            if (record.active && topmost.contains(record.volumePath))
                mounted.push_back(&record);
        }
        putInnerFirst(mounted);
        auto next = mounted.begin(); // takes the place of the mounted record whose turn it is in the list
        for (const auto& record : records) {
            if (!topmost.contains(record.volumePath) && !context_.volumes.isKnown(record.volumePath)) {
                sayUnknown(record);
            } else if (!topmost.contains(record.volumePath)) {
                plan_.addLine(TWText::fill(AlreadyUnmounted, { record.shownName() }));
            } else if (record.active) {
                add(**next, *topmost.at((*next)->volumePath), *shown);
                ++next;
            }
        }
    }

    void sayNotListed(const std::vector<TWVolumesRecord>& records)
    {
        if (std::none_of(records.begin(), records.end(), [](const auto& record) { return record.active; }))
            return;
        plan_.addLine(std::string(NotListed), TWPlannedLine::Effect::Incomplete);
        plan_.incomplete = true;
    }

    void sayUnknown(const TWVolumesRecord& record)
    {
        if (!record.active)
            return;
        plan_.addLine(
            TWText::fill(LeftAlone, { record.shownName(), SilentService }), TWPlannedLine::Effect::Incomplete);
        plan_.incomplete = true;
    }

    void add(const TWVolumesRecord& record, const TWVolume& volume, const std::vector<TWVolume>& shown)
    {
        auto& item
            = plan_.addThing(record.shownName(), TWPlannedAction::Unmount, planned({ volume, {}, std::nullopt }));
        if (std::find(shown.begin(), shown.end(), volume) != shown.end())
            found_.push_back(volume);
        else
            plan_.object(item, isInSandbox(volume) ? SystemVolume : OutsideSandbox);
    }

    bool isInSandbox(const TWVolume& volume) const
    {
        const auto& places = context_.deletion.places;
        return !places.sandboxed() || TWPath::isAtOrBelow(volume.path, places.sandboxRoot);
    }

    void look()
    {
        looking_ = TWLookAtVolumes(
            context_.deletion.runLoop, context_.volumes, found_, [this](const TWVolumeFacts& facts) { take(facts); },
            [this] { end(); });
    }

    void take(const TWVolumeFacts& facts)
    {
        for (auto& thing : plan_.things) {
            if (thing->path == facts.volume.path)
                thing = planned(facts);
        }
    }

    // Ends a look that takes too long as well, so that the call is made once. The call may destroy this object.
    void end()
    {
        ending_.reset();
        looking_.reset();
        const auto made = made_;
        made(std::move(plan_));
    }

    const TWCleanerContext context_;
    const TWCleaner::PlanMade made_;
    TWPlan plan_;
    std::vector<TWVolume> found_;
    std::unique_ptr<TWRunLoopHandle> ending_;
    std::unique_ptr<TWVolumeLook> looking_;
};

}

TWVolumesCleaner::TWVolumesCleaner(const TWCleanerContext& context)
    : TWCleaner(context.deletion.runLoop)
    , context_(context)
{
    setStartedMessageString(Started);
    setSuccessMessageString(Success);
    setFailureMessageString(Failure);
}

std::unique_ptr<TWRunLoopHandle> TWVolumesCleaner::makePlan(PlanGrown, PlanMade made) const
{
    return std::make_unique<Planning>(context_, info_, std::move(made));
}

void TWVolumesCleaner::perform(TWPlannedJob planned)
{
    dropJob();
    job_ = std::move(planned);
    line_ = item_ = 0;
    success_ = !job_.plan->incomplete;
    stopping_ = false;
    outcome_ = {};
    outcome_.measured = true;
    outcome_.left = job_.refused;
    sayNextLines();
}

// The lines stand between the items.
void TWVolumesCleaner::sayNextLines()
{
    const auto& lines = job_.plan->lines;
    const auto begin = line_;
    while (line_ < lines.size() && lines[line_].item <= item_)
        ++line_;
    sayLines(job_.plan, begin, line_, [this] { unmountNext(); });
}

void TWVolumesCleaner::unmountNext()
{
    if (stopping_ || item_ == job_.plan->items.size()) {
        end();
        return;
    }
    if (!job_.isTicked(item_)) {
        next();
        return;
    }
    const auto mounts = context_.volumes.mountsAt(volumeOf(*job_.plan, item()).path);
    if (mounts && mounts->empty())
        sayLines({ TWText::fill(AlreadyUnmounted, { item().name }) }, [this] { next(); });
    else if (const auto why = obstacle(mounts); !why.empty())
        leave({ why });
    else
        sayLines({ TWText::fill(Unmounting, { item().name }) }, [this] { unmount(); });
}

// Why the volume is left alone: a line, or "".
std::string TWVolumesCleaner::obstacle(const std::optional<std::vector<TWVolume>>& mounts) const
{
    if (!mounts)
        return NotListed;
    if (item().objection)
        return TWText::fill(LeftAlone, { item().name, item().objection });
    const bool isSame = mounts->back() == volumeOf(*job_.plan, item());
    return isSame ? "" : TWText::fill(LeftAlone, { item().name, AnotherVolume });
}

// The line was said on another turn, and the volume may have been replaced meanwhile.
void TWVolumesCleaner::unmount()
{
    const auto& path = volumeOf(*job_.plan, item()).path;
    const auto mounts = context_.volumes.mountsAt(path);
    if (mounts && mounts->empty()) {
        next();
        return;
    }
    if (const auto why = obstacle(mounts); !why.empty()) {
        leave({ why });
        return;
    }
    const auto& eject = context_.deletion.places.eject;
    int error = 0;
    const auto folder = context_.deletion.fileSystem.holdFolder("/", error);
    if (!folder) {
        leave({ TWText::fill(NoHelper, { eject, TWErrorText(error) }) });
        return;
    }
    child_ = context_.deletion.launcher.launch(
        eject, { "eject", "-force", path }, *folder, [this](const TWTermination& termination) { ended(termination); });
    late_ = runLoop().after(LongestUnmount, [this] { ended({ TWTermination::Kind::Signalled, SIGALRM, "" }); });
}

// What it says is only passed on, except that it was not sure about the device.
void TWVolumesCleaner::ended(const TWTermination& termination)
{
    using Kind = TWTermination::Kind;
    late_.reset();
    child_.reset();
    reason_ = reasonIn(termination.output);
    if (termination.kind == Kind::NotLaunched)
        reason_ = TWText::fill(NoHelper, { context_.deletion.places.eject, TWErrorText(termination.code) });
    if (termination.kind == Kind::Signalled && termination.code == SIGALRM)
        reason_ = TookTooLong;
    warning_ = warningIn(termination.output);
    isDeviceSure_ = termination.kind != Kind::Exited || termination.code != HelperLeftDeviceInUse;
    if (stopping_) {
        judge({});
        return;
    }
    looking_ = std::make_unique<TWBackgroundStream<TWVolumeUse>>(
        runLoop(), 1,
        [&volumes = context_.volumes, volume = volumeOf(*job_.plan, item())](
            auto& sink) { sink.put(volumes.use(volume, sink.cancellation())); },
        [this](const TWVolumeUse& use) { judge(use); }, [] {});
}

// Differs on purpose: the mount table decides and not the folder, which stays. A device that was detached while
// something held it must be free as well.
void TWVolumesCleaner::judge(const TWVolumeUse& use)
{
    looking_.reset();
    const auto mounts = context_.volumes.mountsAt(volumeOf(*job_.plan, item()).path);
    const bool isGone = mounts && mounts->empty();
    std::vector<TWReportLine> lines;
    if (!warning_.empty())
        lines.emplace_back(TWText::fill(HelperSaid, { item().name, warning_ }));
    if (!isGone || use.isInUse || !isDeviceSure_) {
        addReasons(mounts, use, lines);
        leave(std::move(lines));
        return;
    }
    ++outcome_.gone;
    sayLines(std::move(lines), [this] { next(); });
}

// Of the volume that is still mounted, or may be, or is still in use.
void TWVolumesCleaner::addReasons(
    const std::optional<std::vector<TWVolume>>& mounts, const TWVolumeUse& use, std::vector<TWReportLine>& lines) const
{
    const auto& name = item().name;
    if (!mounts) {
        lines.emplace_back(NotListed);
    } else if (mounts->empty() && !use.isInUse) {
        lines.emplace_back(TWText::fill(MayBeUsed, { name }));
    } else if (mounts->empty()) {
        const auto by = use.holders.empty() ? "" : TWText::fill(ByPrograms, { programs(use) });
        lines.emplace_back(TWText::fill(StillUsed, { name, by }));
    } else {
        lines.emplace_back(reason_.empty() ? TWText::fill(StillMounted, { mounts->back().path })
                                           : TWText::fill(HelperSaid, { name, reason_ }));
        if (!use.holders.empty())
            lines.emplace_back(TWText::fill(UsedBy, { name, programs(use) }));
    }
}

void TWVolumesCleaner::leave(std::vector<TWReportLine> lines)
{
    success_ = false;
    ++outcome_.left;
    sayLines(std::move(lines), [this] { next(); });
}

void TWVolumesCleaner::next()
{
    ++item_;
    sayNextLines();
}

void TWVolumesCleaner::end()
{
    sayWhatWasBrought();
    if (stopping_)
        finish(Outcome::Failure, Failure);
    else
        sayLines(refusedLines(job_.refused), [this] { reportOutcome(); });
}

void TWVolumesCleaner::reportOutcome()
{
    if (success_)
        finish(Outcome::Success, job_.check ? TWPreviewSuccessMessage : Success);
    else
        finish(Outcome::Failure, Failure);
}

// Items are what is deleted or stays; volumes are counted apart from them.
void TWVolumesCleaner::sayWhatWasBrought()
{
    const auto gone = TWText::fill(WereUnmounted, { TWText::count(outcome_.gone, "volume was", "volumes were") });
    const auto left = TWText::fill(NotUnmounted, { TWText::count(outcome_.left, "volume", "volumes") });
    outcome_.others = TWText::join({ outcome_.gone == 0 ? "" : gone, outcome_.left == 0 ? "" : left }, " ");
    outcome_.gone = outcome_.left = 0;
}

// A child that is told to end leaves the volume either mounted or not, and is waited for.
void TWVolumesCleaner::stopPerforming()
{
    stopping_ = true;
    if (child_) {
        child_->terminate();
        return;
    }
    looking_.reset();
    ending_ = runLoop().after(TWRunLoop::Duration(0), [this] { end(); });
}

void TWVolumesCleaner::dropJob()
{
    child_.reset();
    late_.reset();
    looking_.reset();
    ending_.reset();
}

TWProgress TWVolumesCleaner::performed() const
{
    TWProgress progress;
    progress.planned = true;
    progress.items = job_.plan->items.size();
    progress.itemsDone = item_;
    return progress;
}
