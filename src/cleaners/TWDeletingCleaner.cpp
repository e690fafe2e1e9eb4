#include "cleaners/TWDeletingCleaner.h"

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

void TWDeletingCleaner::perform(TWPlan plan)
{
    auto lines = std::move(plan.lines);
    const auto shared = std::make_shared<const TWPlan>(std::move(plan));
    sayLines(std::move(lines), [this, shared] { deletePlanned(shared); });
}

void TWDeletingCleaner::deletePlanned(const std::shared_ptr<const TWPlan>& plan)
{
    if (plan->failure) {
        finish(Outcome::Failure, *plan->failure);
        return;
    }
    secureMode_ = plan->secureMode;
    authorization_ = plan->authorization;
    complete_ = !plan->incomplete;
    fileDeleteQueue_ = makeQueue(TWFileDeleteQueue::Announcing::EveryPath);
    std::vector<TWDeletionTarget> targets;
    std::vector<std::size_t> positions; // in the queue, by item
    targets.reserve(plan->items.size());
    positions.reserve(plan->items.size());
    queued_.reserve(plan->items.size());
    for (const auto& item : plan->items) {
        positions.push_back(targets.size());
        if (!item.quiet) {
            queued_.push_back(positions.size() - 1);
            targets.push_back(TWPlan::target(plan, item));
        } else if (item.owner == TWNone) {
            followers_.push_back({ TWPlan::target(plan, item), std::nullopt });
        } else {
            followers_.push_back({ TWPlan::target(plan, item), positions[item.owner] });
        }
    }
    fileDeleteQueue_->addFilesFromArray(std::move(targets));
    if (measures())
        measure(plan);
    else
        beginDeleting();
}

void TWDeletingCleaner::measure(const std::shared_ptr<const TWPlan>& plan)
{
    headStart_ = runLoop().after(HeadStart, [this] { beginDeleting(); });
    sizes_ = std::make_unique<TWPlanSizes>(runLoop(), tools_.fileSystem, plan, [this] {
        if (!headStart_)
            return;
        measuredInTime_ = sizes_->complete();
        beginDeleting();
    });
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
    if (!sizes_)
        return progress;
    for (; addedUp_ < progress.itemsDone; ++addedUp_)
        bytesDone_ += sizes_->bytes(queued_[addedUp_]);
    progress.measured = sizes_->complete();
    progress.bytes = sizes_->total();
    progress.bytesDone = std::min(bytesDone_, progress.bytes);
    return progress;
}

// Counts the space of an item only if it is certainly gone.
void TWDeletingCleaner::addUpOutcome()
{
    outcome_ = {};
    outcome_.measured = measuredInTime_;
    for (std::size_t position = 0; position < queued_.size(); ++position) {
        const bool gone = fileDeleteQueue_->isGone(position);
        ++(gone ? outcome_.gone : outcome_.left);
        if (gone && sizes_)
            outcome_.bytes += sizes_->bytes(queued_[position]);
    }
}

std::unique_ptr<TWFileDeleteQueue> TWDeletingCleaner::makeQueue(TWFileDeleteQueue::Announcing announcing)
{
    auto queue = std::make_unique<TWFileDeleteQueue>(tools_, announcing);
    queue->setDelegate(this);
    queue->setSecureDeleteMode(secureMode_);
    return queue;
}

void TWDeletingCleaner::fileDeleteQueueProgressed(const std::string& message)
{
    reportProgress(message);
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
    else if (complete_)
        finish(Outcome::Success, texts_.success);
    else
        finish(Outcome::Failure, texts_.failure);
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
        outcome_ = { 0, queued_.size(), 0, true };
        ending_ = runLoop().after(TWRunLoop::Duration(0), [this] { finish(Outcome::Failure, texts_.failure); });
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
    queued_.clear();
    addedUp_ = 0;
    bytesDone_ = 0;
    measuredInTime_ = false;
    outcome_ = {};
    fileDeleteQueue_.reset();
    findingFollowers_.reset();
    followersQueue_.reset();
    ending_.reset();
    followers_.clear();
}
