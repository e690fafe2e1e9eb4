#include "cleaners/TWDeletingCleaner.h"

#include "cleaners/TWPreviewTotal.h"

#include <algorithm>
#include <utility>

namespace {

// Of the measuring. What is deleted while it is measured cannot be told to the byte.
constexpr TWRunLoop::Duration HeadStart{ 300 };

}

TWDeletingCleaner::TWDeletingCleaner(const TWDeletionTools& tools, const Texts& texts)
    : TWCleaner(tools.runLoop)
    , tools_(tools)
    , texts_(texts)
{
    setStartedMessageString(texts.started);
    setSuccessMessageString(texts.success);
    setFailureMessageString(texts.failure);
}

void TWDeletingCleaner::perform(TWPlannedJob planned)
{
    auto plan = planned.plan;
    const auto lines = plan->lines.size();
    sayLines(std::move(plan), 0, lines, [this, planned = std::move(planned)] { deletePlanned(planned); });
}

void TWDeletingCleaner::deletePlanned(const TWPlannedJob& planned)
{
    const auto& plan = *planned.plan;
    if (plan.failure) {
        finish(Outcome::Failure, *plan.failure);
        return;
    }
    // Whoever has switched on secure deletion since the preview relies on it.
    secureMode_ = planned.check ? TWStrongerMode(plan.secureMode, secureModeNow()) : plan.secureMode;
    authorization_ = plan.authorization;
    refused_ = planned.refused;
    complete_ = !plan.incomplete;
    plan_ = planned.plan;
    check_ = planned.check;
    fileDeleteQueue_ = makeQueue(TWFileDeleteQueue::Announcing::EveryPath);
    addToQueues(planned);
    if (measures())
        measure(planned);
    else
        beginDeleting();
}

// A quiet item whose owner was unticked stays with it.
void TWDeletingCleaner::addToQueues(const TWPlannedJob& planned)
{
    const auto& items = planned.plan->items;
    std::vector<TWDeletionTarget> targets;
    std::vector<std::size_t> positions; // in the queue, by item
    targets.reserve(items.size());
    positions.reserve(items.size());
    for (std::size_t index = 0; index < items.size(); ++index) {
        const auto& item = items[index];
        const bool ticked = planned.isTicked(index);
        positions.push_back(targets.size());
        if (!item.quiet && ticked) {
            targets.push_back(TWPlan::target(planned.plan, item));
            queued_.push_back(index);
        } else if (item.quiet && ticked && item.owner == TWNone) {
            followers_.push_back({ TWPlan::target(planned.plan, item), std::nullopt });
        } else if (item.quiet && ticked && planned.isTicked(item.owner)) {
            followers_.push_back({ TWPlan::target(planned.plan, item), positions[item.owner] });
        }
    }
    records_ = followers_.size();
    fileDeleteQueue_->addFilesFromArray(std::move(targets));
}

const char* TWDeletingCleaner::successText() const
{
    return check_ ? TWPreviewSuccessMessage : texts_.success;
}

void TWDeletingCleaner::measure(const TWPlannedJob& planned)
{
    headStart_ = runLoop().after(HeadStart, [this] { beginDeleting(); });
    sizes_ = std::make_unique<TWPlanSizes>(
        runLoop(), tools_.fileSystem, planned.plan,
        [planned](const TWCancellation& cancellation) {
            auto unticked = planned.unticked;
            unticked.resize(planned.plan->items.size());
            return TWItemsThatCount({ planned.plan, nullptr, std::move(unticked), 0, 0 }, cancellation);
        },
        [] {},
        [this] {
            if (!headStart_)
                return;
            measuredInTime_ = sizes_->complete();
            beginDeleting();
        });
}

std::uint64_t TWDeletingCleaner::bytes(std::size_t position) const
{
    return sizes_ && isMeasured(position) ? (*sizes_->bytes())[queued_[position]] : 0;
}

std::uint64_t TWDeletingCleaner::sharedBytes(std::size_t position) const
{
    const auto& folders = sizes_->folders();
    const auto found = std::ranges::lower_bound(folders, queued_[position], {}, &TWPlanSizes::Folder::item);
    return found != folders.end() && found->item == queued_[position] ? found->shared : 0;
}

void TWDeletingCleaner::beginDeleting()
{
    headStart_.reset();
    fileDeleteQueue_->deleteFiles(authorization_);
}

TWProgress TWDeletingCleaner::performed() const
{
    TWProgress progress;
    if (!fileDeleteQueue_)
        return progress;
    progress.planned = true;
    progress.items = queued_.size();
    progress.itemsDone = fileDeleteQueue_->finished();
    progress.records = records_;
    progress.recordsDone = followersQueue_ ? followersQueue_->finished() : 0;
    if (!sizes_)
        return progress;
    for (; addedUp_ < progress.itemsDone && isMeasured(addedUp_); ++addedUp_)
        bytesDone_ += bytes(addedUp_);
    progress.measured = sizes_->complete();
    progress.bytes = sizes_->total();
    progress.bytesDone = std::min(bytesDone_, progress.bytes);
    return progress;
}

// Counts only space that this job has certainly freed.
void TWDeletingCleaner::addUpOutcome()
{
    outcome_ = {};
    outcome_.measured = measuredInTime_;
    Names names;
    for (std::size_t position = 0; position < queued_.size(); ++position) {
        const bool gone = fileDeleteQueue_->isGone(position);
        const bool deleted = gone && fileDeleteQueue_->isDeleted(position);
        if (gone && !deleted && plan_->items[queued_[position]].isAbsent())
            continue;
        ++(gone ? outcome_.gone : outcome_.left);
        if (deleted)
            addUpFreed(position, names);
    }
    outcome_.left += refused_;
}

// The space of a file is free only when its last name is gone.
void TWDeletingCleaner::addUpFreed(std::size_t position, Names& names)
{
    if (!sizes_ || !isMeasured(position))
        return;
    if (!sizes_->counts(queued_[position])) {
        // It is in the size of the folder around it, which may have stayed.
        outcome_.measured = outcome_.measured && outcome_.left == 0;
        return;
    }
    const auto& facts = plan_->items[queued_[position]].facts;
    const bool allNames
        = facts.kind == TWFileKind::Folder || facts.links <= 1 || ++names[facts.identity] == facts.links;
    const auto shared = sharedBytes(position);
    if (allNames)
        outcome_.bytes += bytes(position) - shared;
    outcome_.measured = outcome_.measured && shared == 0;
}

std::unique_ptr<TWFileDeleteQueue> TWDeletingCleaner::makeQueue(TWFileDeleteQueue::Announcing announcing)
{
    auto queue = std::make_unique<TWFileDeleteQueue>(tools_, announcing);
    queue->setDelegate(this);
    queue->setSecureDeleteMode(secureMode_);
    queue->setPreviewCheck(check_);
    return queue;
}

void TWDeletingCleaner::fileDeleteQueueProgressed(const TWReportLine& line)
{
    reportProgress(line);
}

void TWDeletingCleaner::fileDeleteQueueDone()
{
    verifyQueue();
}

void TWDeletingCleaner::verify()
{
    if (hasJob())
        return;
    if (fileDeleteQueue_)
        verifyQueue();
    else
        finish(Outcome::Failure, texts_.failure);
}

void TWDeletingCleaner::verifyQueue()
{
    (followersQueue_ ? followersQueue_ : fileDeleteQueue_)->verify();
}

void TWDeletingCleaner::fileDeleteQueueVerified(bool nothingLeft)
{
    if (!followersQueue_)
        addUpOutcome();
    complete_ = complete_ && nothingLeft;
    if (!followersQueue_ && !followers_.empty() && !fileDeleteQueue_->stopped())
        findFollowers();
    else
        finishJob();
}

void TWDeletingCleaner::finishJob()
{
    if (!findRemarks())
        reportOutcome();
}

// Returns false if there is nothing to find out.
bool TWDeletingCleaner::findRemarks()
{
    auto find = hasJob() ? remarks() : nullptr;
    std::vector<std::size_t> deleted;
    for (std::size_t position = 0; find && position < queued_.size(); ++position) {
        if (fileDeleteQueue_->isDeleted(position))
            deleted.push_back(queued_[position]);
    }
    if (deleted.empty())
        return false;
    findingRemarks_ = std::make_unique<TWBackgroundStream<Remark>>(
        tools_.runLoop, 1,
        [find = std::move(find), plan = plan_, deleted = std::move(deleted)](
            auto& sink) { sink.put(find(*plan, deleted, sink.cancellation())); },
        [this](Remark remark) { sayRemark(std::move(remark)); }, [] {});
    return true;
}

void TWDeletingCleaner::sayRemark(Remark remark)
{
    findingRemarks_.reset();
    outcome_.bytes -= std::min(outcome_.bytes, remark.bytes);
    const auto said = std::make_shared<TWPlan>();
    for (auto& line : remark.lines)
        said->addLine(std::move(line));
    sayLines(said, 0, said->lines.size(), [this] { reportOutcome(); });
}

// The user has seen that the refused items would stay, so they are no failure.
void TWDeletingCleaner::reportOutcome()
{
    const auto report = [this] {
        if (complete_)
            finish(Outcome::Success, successText());
        else
            finish(Outcome::Failure, texts_.failure);
    };
    if (hasJob())
        sayLines(refusedLines(refused_), report);
    else
        report(); // a second look says only what it has found
}

// They come after the items, so that an item that stays keeps its record.
void TWDeletingCleaner::findFollowers()
{
    std::erase_if(followers_,
        [this](const auto& follower) { return follower.owner && !fileDeleteQueue_->isGone(*follower.owner); });
    findingFollowers_ = std::make_unique<TWBackgroundStream<std::vector<TWDeletionTarget>>>(
        tools_.runLoop, 1,
        [followers = std::exchange(followers_, {}), test = followerTest()](auto& sink) {
            std::vector<TWDeletionTarget> due;
            for (const auto& follower : followers) {
                if (sink.cancellation().cancelled())
                    return;
                if (follower.owner || test(std::string(follower.target.name)))
                    due.push_back(follower.target);
            }
            sink.put(std::move(due));
        },
        [this](std::vector<TWDeletionTarget> due) { deleteFollowers(std::move(due)); }, [] {});
}

void TWDeletingCleaner::deleteFollowers(std::vector<TWDeletionTarget> due)
{
    followersQueue_ = makeQueue(TWFileDeleteQueue::Announcing::OnlyWhatIsLeft);
    followersQueue_->addFilesFromArray(std::move(due));
    followersQueue_->deleteFiles(authorization_);
}

void TWDeletingCleaner::stopPerforming()
{
    if (headStart_) {
        headStart_.reset();
        sizes_.reset();
        measuredInTime_ = true;
        fileDeleteQueue_->stop();
        verifyQueue();
    } else if (findingRemarks_) {
        findingRemarks_.reset();
        ending_ = runLoop().after(TWRunLoop::Duration(0), [this] { reportOutcome(); });
    } else if (followersQueue_) {
        followersQueue_->stop();
    } else if (findingFollowers_) {
        findingFollowers_.reset();
        ending_ = runLoop().after(TWRunLoop::Duration(0), [this] { finish(Outcome::Failure, texts_.failure); });
    } else {
        fileDeleteQueue_->stop();
    }
}

void TWDeletingCleaner::dropJob()
{
    headStart_.reset();
    sizes_.reset();
    plan_.reset();
    queued_.clear();
    addedUp_ = 0;
    bytesDone_ = 0;
    measuredInTime_ = false;
    outcome_ = {};
    fileDeleteQueue_.reset();
    findingFollowers_.reset();
    followersQueue_.reset();
    findingRemarks_.reset();
    ending_.reset();
    followers_.clear();
}
