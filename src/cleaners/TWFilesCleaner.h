#pragma once

#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWDeletingCleaner.h"
#include "cleaners/TWFilesRule.h"

struct TWFilesCleanerInfo {
    TWFilesRuleList filesArray; // the editor's live list; nullptr counts as empty
    TWAuthorization useAuthorization = TWAuthorization::No;
    bool securelyDeleteFiles = false;
    TWSecureMode securelyDeleteFilesMode = 0;
    std::vector<std::string> wordDictionary;
    std::vector<std::string> problems; // of lists that could not be read; with any, the job cannot succeed
};

// Deletes the files and folders that the active rules name. Main thread.
class TWFilesCleaner final : public TWDeletingCleaner {
public:
    explicit TWFilesCleaner(const TWCleanerContext&);

    void setInfo(TWFilesCleanerInfo info) { info_ = std::move(info); }
    const TWFilesCleanerInfo& info() const { return info_; }

    std::string validate() override;
    std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown, PlanMade) const override;

    // Kept on purpose: while paths are being deleted, it reports the failure and the end at once, but the queue goes on
    // with its remaining paths and reports a second time when it has finished. To really stop, call stop(). Without a
    // job it reports the failure and the end as well; in the other steps of a job it does what stop() does.
    void cancel();

private:
    TWSecureMode secureModeNow() const override;
    std::vector<std::string> wordDictionary() const override { return info_.wordDictionary; }

    TWFilesCleanerInfo info_;
};
