#pragma once

#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWDeletingCleaner.h"
#include "cleaners/TWLogsRecord.h"

struct TWLogsCleanerInfo {
    TWLogsRecordList logsRoot; // the editor's live list of what is chosen; nullptr counts as empty
    std::string problem; // of a list that could not be read; with one, the job cannot succeed
};

// Deletes the logs and log folders that are checked in the logs tree. A checked root loses its entries, never itself.
// Deletes nothing that lies outside of the log folders. Main thread.
class TWLogsCleaner final : public TWDeletingCleaner {
public:
    explicit TWLogsCleaner(const TWCleanerContext&);

    void setInfo(TWLogsCleanerInfo info) { info_ = std::move(info); }
    const TWLogsCleanerInfo& info() const { return info_; }

    std::string validate() override;
    std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown, PlanMade) const override;

    // The paths of the checked nodes, a node before what is below it.
    static std::vector<std::string> activeItemsInArray(const std::vector<TWLogsRecord>&);

private:
    TWSecureMode secureModeNow() const override { return context_.secureMode(); }
    Remarks remarks() const override;
    std::vector<std::string> checkedPaths() const;

    const TWCleanerContext context_;
    TWLogsCleanerInfo info_;
};
