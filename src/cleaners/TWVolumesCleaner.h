#pragma once

#include "cleaners/TWCleaner.h"
#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWVolumeFacts.h"
#include "cleaners/TWVolumesRecord.h"

struct TWVolumesCleanerInfo {
    TWVolumesRecordList volumesArray; // the editor's live list; nullptr counts as empty
    std::vector<std::string> problems; // of lists that could not be read; with any, the job cannot succeed
};

// Unmounts and ejects the active volumes one after another, each with a child process, and looks at the mount table
// afterwards: what the child says about its success does not count. Main thread.
class TWVolumesCleaner final : public TWCleaner {
public:
    explicit TWVolumesCleaner(const TWCleanerContext&);

    void setInfo(TWVolumesCleanerInfo info) { info_ = std::move(info); }
    const TWVolumesCleanerInfo& info() const { return info_; }

    std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown, PlanMade) const override;
    TWOutcome outcome() const override { return outcome_; }

private:
    void perform(TWPlannedJob) override;
    void stopPerforming() override;
    void dropJob() override;
    TWProgress performed() const override;

    void sayNextLines();
    void unmountNext();
    std::string obstacle(const std::optional<std::vector<TWVolume>>& mounts) const;
    void unmount();
    void ended(const TWTermination&);
    void judge(const TWVolumeUse&);
    void addReasons(
        const std::optional<std::vector<TWVolume>>& mounts, const TWVolumeUse&, std::vector<TWReportLine>& lines) const;
    void leave(std::vector<TWReportLine>);
    void next();
    void end();
    void reportOutcome();
    void sayWhatWasBrought();
    const TWPlannedItem& item() const { return job_.plan->items[item_]; }

    const TWCleanerContext context_;
    TWVolumesCleanerInfo info_;
    TWOutcome outcome_;

    // Of the latest job.
    TWPlannedJob job_;
    std::size_t line_ = 0; // of the plan, to be said next
    std::size_t item_ = 0; // being unmounted
    bool success_ = true;
    bool stopping_ = false;
    std::string reason_; // why the child that ended last has failed, as it says
    std::string warning_; // what it warns about although the volume is unmounted
    bool isDeviceSure_ = true; // false if the child has left a device that may be in use
    std::unique_ptr<TWChildProcess> child_;
    std::unique_ptr<TWRunLoopHandle> late_; // gives up a child that does not end
    std::unique_ptr<TWBackgroundStream<TWVolumeUse>> looking_;
    std::unique_ptr<TWRunLoopHandle> ending_; // of a job that was stopped between two volumes
};
