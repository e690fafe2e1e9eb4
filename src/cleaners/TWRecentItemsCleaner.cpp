#include "cleaners/TWRecentItemsCleaner.h"

#include "cleaners/TWRecentItemsPlanner.h"
#include "cleaners/TWRecentItemsTexts.h"
#include "support/TWText.h"

#include <algorithm>

using namespace TWRecentItemsTexts;

namespace {

constexpr auto NoActiveRules
    = "The Recent Items cleaner is checked but there are no active rules. You should either disable the cleaner, "
      "activate some rules, or add some of your own.";
constexpr auto Started = "Clearing recent items...";
constexpr auto Success = "All recent items were removed.";
constexpr auto Failure = "Some recent items could not be removed!";
constexpr auto Deleting = "%@%@ ...";
constexpr auto RemovedKey = "Removed key \"%@\" from %@.";
constexpr auto AlreadyRemoved = "Key \"%@\" already removed from %@.";
constexpr auto CouldNotWrite = "Could not write modifications to %@.";

constexpr auto CouldNotDelete = "Could not delete %@";
constexpr auto CannotWrite = "\"%@\" cannot be written: %@.";
constexpr auto TracesRemain = "\"%@\" may still hold traces of what was removed: %@.";
constexpr auto LeftAlone = "\"%@\" was left alone: %@";
constexpr auto FolderChanged = "its folder is another one than when it was looked at.";
constexpr auto ChangedSincePreview
    = "it has changed since the preview, or what is ticked cannot be removed without what is not.";
constexpr auto OtherNames = "\"%@\" has other names (hard links), under which the removed entries are still there.";

}

TWRecentItemsCleaner::TWRecentItemsCleaner(const TWCleanerContext& context)
    : TWCleaner(context.deletion.runLoop)
    , context_(context)
{
    setStartedMessageString(Started);
    setSuccessMessageString(Success);
    setFailureMessageString(Failure);
}

std::string TWRecentItemsCleaner::validate()
{
    const auto isActive = [](const auto& rule) { return rule.active; };
    const auto& rules = info_.recentItemsArray;
    if (!this->isActive() || (rules && std::any_of(rules->begin(), rules->end(), isActive)))
        return "";
    return NoActiveRules;
}

std::unique_ptr<TWRunLoopHandle> TWRecentItemsCleaner::makePlan(PlanGrown grown, PlanMade made) const
{
    TWPlan beginning;
    beginning.secureMode = context_.secureMode();
    beginning.authorization = context_.authorization();
    beginning.addProblems(info_.problems);
    const auto& deletion = context_.deletion;
    deletion.guard.renew();
    auto work = [planner = TWPathPlanner(deletion.fileSystem, deletion.guard.rules()), &places = deletion.places,
                    &programs = context_.programs,
                    rules = info_.recentItemsArray ? *info_.recentItemsArray : std::vector<TWRecentItemsRule>()](
                    TWPlanStream::Sink& sink) { TWRecentItemsPlanner(planner, places, programs, rules, sink).plan(); };
    return std::make_unique<TWPlanStream>(
        deletion.runLoop, std::move(beginning), std::move(work), std::move(grown), std::move(made));
}

void TWRecentItemsCleaner::perform(TWPlannedJob planned)
{
    job_ = std::move(planned);
    // Whoever has switched on secure deletion since the preview relies on it.
    secureMode_ = job_.check ? TWStrongerMode(job_.plan->secureMode, context_.secureMode()) : job_.plan->secureMode;
    // Differs on purpose: a deletion is waited for over turns of the event loop and not within one, so that the job can
    // be stopped.
    fileDeleter_ = std::make_unique<TWFileDeleter>(context_.deletion);
    fileDeleter_->setDelegate(this);
    fileDeleter_->setPreviewCheck(job_.check);
    outcome_.measured = true;
    outcome_.left = job_.refused;
    sayNextLines();
}

// The lines stand between the items.
void TWRecentItemsCleaner::sayNextLines()
{
    const auto& lines = job_.plan->lines;
    const auto begin = line_;
    while (line_ < lines.size() && lines[line_].item <= item_) {
        const auto effect = lines[line_++].effect;
        success_ = success_ && effect != TWPlannedLine::Effect::Fails;
        complete_ = complete_ && effect != TWPlannedLine::Effect::Incomplete;
    }
    sayLines(job_.plan, begin, line_, [this] { carryOutNext(); });
}

void TWRecentItemsCleaner::carryOutNext()
{
    const auto& items = job_.plan->items;
    if (stopping_ || item_ == items.size()) {
        finishJob();
        return;
    }
    if (!items[item_].keepsFile()) {
        if (job_.isTicked(item_))
            deleteFile();
        else
            go(item_ + 1, {});
        return;
    }
    const auto end = endOfFile();
    Keys keys;
    bool any = false; // a key that has entries
    bool anyTicked = false;
    for (auto index = item_; index < end; ++index) {
        any = any || !items[index].quiet;
        anyTicked = anyTicked || (isCounted(index) && isTicked(index));
        if (isTicked(index))
            keys.push_back(index);
    }
    if (keys.empty() || (any && !anyTicked))
        go(end, {});
    else
        removeEntries(keys);
}

// A key that an earlier rule or an earlier place in the list names as well stays with that one.
bool TWRecentItemsCleaner::isTicked(std::size_t item) const
{
    const auto owner = job_.plan->items[item].owner;
    return job_.isTicked(item) && (owner == TWNone || job_.isTicked(owner));
}

// After a preview nothing is removed that had no row there.
bool TWRecentItemsCleaner::isCut(std::size_t item) const
{
    return !job_.check || isCounted(item);
}

bool TWRecentItemsCleaner::isCounted(std::size_t item) const
{
    return !job_.plan->items[item].quiet;
}

// The keys of one file stand side by side.
std::size_t TWRecentItemsCleaner::endOfFile() const
{
    const auto& plan = *job_.plan;
    const auto& first = plan.items[item_];
    auto end = item_ + 1;
    for (; end < plan.items.size(); ++end) {
        const auto& next = plan.items[end];
        if (!next.keepsFile() || next.rule != first.rule || plan.change(next).file != plan.change(first).file)
            break;
    }
    return end;
}

void TWRecentItemsCleaner::deleteFile()
{
    label_ = fileDeleter_->deleteFile(TWPlan::target(job_.plan, job_.plan->items[item_]), secureMode_,
        TWWaiting::Asynchronously, job_.plan->authorization);
}

// Looks at the file in the folder from which it was deleted.
void TWRecentItemsCleaner::fileDeleterDone()
{
    looking_ = std::make_unique<TWBackgroundStream<TWPresence>>(
        runLoop(), 1,
        [target = TWPlan::target(job_.plan, job_.plan->items[item_]), &fileSystem = context_.deletion.fileSystem](
            auto& sink) {
            int error = 0;
            const auto folder = fileSystem.holdFolder(target.folder->realPath, error);
            const bool same = folder && folder->identity() == target.folder->identity;
            sink.put(same ? folder->look(std::string(target.name)).presence : TWPresence::Unknown);
        },
        [this](TWPresence presence) { deletionChecked(presence); }, [] {});
}

void TWRecentItemsCleaner::deletionChecked(TWPresence presence)
{
    looking_.reset();
    const auto& item = job_.plan->items[item_];
    const auto& report = fileDeleter_->report();
    const bool gone = presence == TWPresence::Gone && !report.missing;
    Lines lines = report.notices;
    const auto& file = job_.plan->change(item).file;
    if (report.missing)
        lines.push_back(TWReportLine::about(DoesNotExist, { file }));
    else
        lines.push_back(TWReportLine::about(Deleting, { label_, file }, 1));
    if (!gone && !report.missing) {
        lines.insert(lines.end(), report.problems.begin(), report.problems.end());
        lines.push_back(TWReportLine::about(CouldNotDelete, { file }));
    }
    // Kept on purpose: a deletion makes up for what earlier rules could not do. A file that is still there does not.
    success_ = success_ || !report.missing;
    complete_ = complete_ && (gone || report.missing);
    noteDeletion(item, gone);
    go(item_ + 1, std::move(lines));
}

void TWRecentItemsCleaner::noteDeletion(const TWPlannedItem& item, bool gone)
{
    ++(gone ? outcome_.gone : outcome_.left);
    const bool isFile = item.facts.kind != TWFileKind::Folder;
    if (gone && isFile && item.facts.links == 1)
        outcome_.bytes += item.facts.bytes;
    else
        outcome_.measured = outcome_.measured && !gone;
    if (gone && !isFile && job_.check)
        job_.check->noteDeleted({ job_.plan->realPath(item) });
}

// Everything that takes long or may be refused happens in the background.
void TWRecentItemsCleaner::removeEntries(const Keys& keys)
{
    const auto& plan = *job_.plan;
    const auto& first = plan.items[keys.front()];
    std::vector<std::string> names;
    std::optional<TWPreferenceFile::Found> seen;
    if (job_.check)
        seen.emplace(TWPreferenceFile::Found{ job_.check->expected(first.facts), {}, false });
    for (const auto key : keys) {
        if (!isCut(key))
            continue;
        names.push_back(plan.change(plan.items[key]).key);
        if (seen)
            seen->entries.counts.push_back(plan.change(plan.items[key]).entries);
    }
    editing_ = std::make_unique<TWBackgroundStream<Edited>>(
        runLoop(), 1,
        [target = TWPlan::target(job_.plan, first), rules = context_.deletion.guard.rules(), context = context_,
            names = std::move(names), seen = std::move(seen)](auto& sink) {
            sink.put(edit(context, target, *rules, names, seen ? &*seen : nullptr, sink.cancellation()));
        },
        [this, keys](const Edited& done) { edited(keys, done); }, [] {});
}

// Asks the rules again, because a file may have been put on the keep list since it was planned. Any thread.
TWRecentItemsCleaner::Edited TWRecentItemsCleaner::edit(const TWCleanerContext& context, const TWDeletionTarget& target,
    const TWDeletionRules& rules, const std::vector<std::string>& keys, const TWPreferenceFile::Found* seen,
    const TWCancellation& cancellation)
{
    int error = 0;
    const auto folder = context.deletion.fileSystem.holdFolder(target.folder->realPath, error);
    if (!folder)
        return { {}, TWErrorText(error) + "." };
    if (folder->identity() != target.folder->identity)
        return { {}, FolderChanged };
    const std::string name(target.name);
    const auto judged = rules.judgeFolder(*folder, target.folder->realPath);
    if (auto objection = rules.objection(judged, name, folder->look(name)); !objection.empty())
        return { {}, std::move(objection) };
    auto removed
        = TWPreferenceFile(context.programs.files, context.deletion.fileSystem, *folder, target.folder->realPath, name)
              .remove(keys, seen, cancellation);
    const auto* refusal = removed.hasChanged ? ChangedSincePreview : "";
    return { std::move(removed), refusal };
}

void TWRecentItemsCleaner::edited(const Keys& keys, const Edited& done)
{
    editing_.reset();
    const auto& plan = *job_.plan;
    const auto& first = plan.items[keys.front()];
    const auto& removed = done.removed;
    const bool opened = done.refusal.empty() && removed.entries.problem.empty();
    const bool written = opened && removed.problem.empty();
    if (job_.check && written)
        job_.check->noteOwnChange(plan.realPath(first), first.facts, removed.now);
    for (const auto key : keys) {
        if (!plan.items[key].quiet)
            ++(written ? outcome_.gone : outcome_.left);
    }
    complete_ = complete_ && done.refusal.empty() && removed.traces.empty();
    success_ = success_ && (!done.refusal.empty() || opened || removed.missing);
    go(endOfFile(), linesOf(keys, done));
}

TWRecentItemsCleaner::Lines TWRecentItemsCleaner::linesOf(const Keys& keys, const Edited& done) const
{
    const auto& plan = *job_.plan;
    const auto& file = plan.change(plan.items[keys.front()]).file;
    const auto& removed = done.removed;
    if (!done.refusal.empty())
        return { TWReportLine::about(LeftAlone, { file, done.refusal }) };
    Lines lines;
    if (!removed.entries.problem.empty()) {
        if (!removed.missing)
            lines.push_back(TWReportLine::about(CannotOpen, { file, removed.entries.problem }));
        lines.push_back(TWReportLine::about(CouldNotOpen, { file }));
        return lines;
    }
    bool any = false;
    auto count = removed.entries.counts.begin();
    for (const auto item : keys) {
        const bool found = isCut(item) && *count++ > 0;
        const auto& key = plan.change(plan.items[item]).key;
        lines.push_back(TWReportLine::about(found ? RemovedKey : AlreadyRemoved, { key, file }, 1));
        any = any || found;
    }
    // Kept on purpose: this is no failure.
    if (!removed.problem.empty()) {
        lines.push_back(TWReportLine::about(CannotWrite, { file, removed.problem }));
        lines.push_back(TWReportLine::about(CouldNotWrite, { file }));
    } else if (!removed.traces.empty()) {
        lines.push_back(TWReportLine::about(TracesRemain, { file, removed.traces }));
    } else if (any && removed.facts.links > 1) {
        lines.push_back(TWReportLine::about(OtherNames, { file }));
    }
    return lines;
}

// Says the lines and goes on with the item.
void TWRecentItemsCleaner::go(std::size_t item, Lines lines)
{
    for (; item_ < item; ++item_)
        done_ += isCounted(item_) ? 1U : 0U;
    auto said = std::make_shared<TWPlan>();
    for (auto& line : lines)
        said->addLine(std::move(line));
    sayLines(said, 0, said->lines.size(), [this] { sayNextLines(); });
}

void TWRecentItemsCleaner::finishJob()
{
    sayLines(refusedLines(job_.refused), [this] {
        // After a preview success means that everything that was ticked is gone, so a file that could not be written
        // counts.
        const bool allGone = !job_.check || outcome_.left == job_.refused;
        if (success_ && complete_ && allGone)
            finish(Outcome::Success, job_.check ? TWPreviewSuccessMessage : Success);
        else
            finish(Outcome::Failure, Failure);
    });
}

TWProgress TWRecentItemsCleaner::performed() const
{
    TWProgress progress;
    if (!job_.plan)
        return progress;
    progress.planned = true;
    for (std::size_t index = 0; index < job_.plan->items.size(); ++index)
        progress.items += isCounted(index) && job_.isTicked(index) ? 1U : 0U;
    progress.itemsDone = std::min<std::uint64_t>(done_, progress.items);
    return progress;
}

// A file that is being rewritten is finished, because that cannot be undone half-way.
void TWRecentItemsCleaner::stopPerforming()
{
    stopping_ = true;
    fileDeleter_->terminate();
}

void TWRecentItemsCleaner::dropJob()
{
    fileDeleter_.reset();
    editing_.reset();
    looking_.reset();
    job_ = {};
    item_ = 0;
    line_ = 0;
    done_ = 0;
    success_ = true;
    complete_ = true;
    stopping_ = false;
    outcome_ = {};
}
