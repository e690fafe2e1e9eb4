#include "cleaners/TWDeletingCleaner.h"

#include <utility>

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
    for (const auto& item : plan->items) {
        positions.push_back(targets.size());
        if (!item.quiet)
            targets.push_back(TWPlan::target(plan, item));
        else if (item.owner == TWNone)
            followers_.push_back({ TWPlan::target(plan, item), std::nullopt });
        else
            followers_.push_back({ TWPlan::target(plan, item), positions[item.owner] });
    }
    fileDeleteQueue_->addFilesFromArray(std::move(targets));
    fileDeleteQueue_->deleteFiles(authorization_);
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
    if (followersQueue_) {
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
    fileDeleteQueue_.reset();
    findingFollowers_.reset();
    followersQueue_.reset();
    ending_.reset();
    followers_.clear();
}
