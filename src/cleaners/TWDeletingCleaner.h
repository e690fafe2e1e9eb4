#pragma once

#include "cleaners/TWCleaner.h"
#include "cleaners/TWPlanSizes.h"
#include "deletion/TWFileDeleteQueue.h"

#include <unordered_map>

// A cleaner whose job is to delete paths: the items of the plan through one queue and then, if the plan has quiet
// items, those through a second one that announces nothing. Main thread.
class TWDeletingCleaner : public TWCleaner, private TWFileDeleteQueueDelegate {
public:
    // After a job, looks at the disk again and reports once more what is left. Reports a failure if nothing was ever
    // deleted. Does nothing while a job goes on, because the job checks its own result.
    void verify();

    TWOutcome outcome() const override { return outcome_; }

protected:
    struct Texts {
        const char* started;
        const char* success;
        const char* failure;
    };

    TWDeletingCleaner(const TWDeletionTools&, const Texts&);

    // Says of the name of a quiet item without an owner, when its turn has come, whether it may still be deleted. Any
    // thread.
    using FollowerTest = std::function<bool(const std::string& name)>;
    virtual FollowerTest followerTest() const
    {
        return [](const std::string&) { return true; };
    }

    // What is to be said about items that were deleted.
    struct Remark {
        std::vector<TWReportLine> lines;
        std::uint64_t bytes = 0; // of the space that the deletions have not freed
    };

    // Finds that out, for items of the plan that are gone. Runs on another thread.
    using Remarks
        = std::function<Remark(const TWPlan&, const std::vector<std::size_t>& deleted, const TWCancellation&)>;
    virtual Remarks remarks() const { return nullptr; }

    // How today's settings say that files are deleted.
    virtual TWSecureMode secureModeNow() const = 0;

    const TWDeletionTools& tools() const { return tools_; }
    TWFileDeleteQueue* fileDeleteQueue() { return fileDeleteQueue_.get(); }

private:
    // Files with several names: how many of them are deleted.
    using Names = std::unordered_map<TWFileIdentity, std::uint32_t>;

    // A quiet item on its way to the second queue.
    struct Follower {
        TWDeletionTarget target;
        std::optional<std::size_t> owner; // position in the first queue
    };

    void perform(TWPlannedJob) override;
    TWProgress performed() const override;
    void stopPerforming() override;
    void dropJob() override;
    void fileDeleteQueueProgressed(const TWReportLine&) override;
    void fileDeleteQueueDone() override;
    void fileDeleteQueueVerified(bool nothingLeft) override;

    void deletePlanned(const TWPlannedJob&);
    void addToQueues(const TWPlannedJob&);
    const char* successText() const;
    void measure(const TWPlannedJob&);
    bool isMeasured(std::size_t position) const { return queued_[position] < sizes_->known(); }
    std::uint64_t bytes(std::size_t position) const; // 0 if not known
    std::uint64_t sharedBytes(std::size_t position) const;
    void addUpFreed(std::size_t position, Names&);
    void beginDeleting();
    void addUpOutcome();
    void verifyQueue();
    void finishJob();
    bool findRemarks();
    void sayRemark(Remark);
    void reportOutcome();
    void findFollowers();
    void deleteFollowers(std::vector<TWDeletionTarget>);
    std::unique_ptr<TWFileDeleteQueue> makeQueue(TWFileDeleteQueue::Announcing);

    TWDeletionTools tools_;
    Texts texts_;
    TWSecureMode secureMode_ = TWPlainDelete;
    TWAuthorization authorization_ = TWAuthorization::No;
    std::uint64_t refused_ = 0; // items of the latest job that its preview had shown as refused
    bool complete_ = true; // everything was looked at and is gone, as far as is known by now
    std::shared_ptr<TWPreviewCheck> check_; // nullptr if the job made its own plan
    TWOutcome outcome_; // of the latest job
    std::shared_ptr<const TWPlan> plan_; // of the latest job
    std::vector<std::size_t> queued_; // the items in the queue, by position there
    std::unique_ptr<TWPlanSizes> sizes_; // if the job is measured
    std::unique_ptr<TWRunLoopHandle> headStart_; // of the measuring; deleting begins at its end
    bool measuredInTime_ = false; // nothing was deleted before it was measured
    mutable std::size_t addedUp_ = 0; // positions whose sizes are in bytesDone_
    mutable std::uint64_t bytesDone_ = 0;
    std::vector<Follower> followers_;
    std::size_t records_ = 0; // followers that the job began with
    std::unique_ptr<TWFileDeleteQueue> fileDeleteQueue_; // a new one for each job
    std::unique_ptr<TWBackgroundStream<std::vector<TWDeletionTarget>>> findingFollowers_;
    std::unique_ptr<TWFileDeleteQueue> followersQueue_;
    std::unique_ptr<TWBackgroundStream<Remark>> findingRemarks_;
    std::unique_ptr<TWRunLoopHandle> ending_; // of a job that was stopped between the two queues
};
