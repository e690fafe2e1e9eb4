#pragma once

#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWDeletingCleaner.h"
#include "cleaners/TWFilesRule.h"

struct TWFilesCleanerInfo {
    TWFilesRuleList filesArray; // live; absent counts as empty
    TWAuthorization useAuthorization = TWAuthorization::No;
    bool securelyDeleteFiles = false;
    TWSecureMode securelyDeleteFilesMode = 0;
    std::vector<std::string> wordDictionary;
    std::vector<std::string> problems; // of lists that could not be read: then nobody can say that all was deleted
};

// Deletes the files and folders that the active rules name. Main thread.
class TWFilesCleaner final : public TWDeletingCleaner {
public:
    explicit TWFilesCleaner(const TWCleanerContext&);

    void setInfo(TWFilesCleanerInfo info) { info_ = std::move(info); }
    const TWFilesCleanerInfo& info() const { return info_; }

    std::string validate() override;
    std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown, PlanMade) const override;

    // Kept on purpose: while paths are being deleted it reports the failure and the end at once, but the queue goes on
    // with its remaining paths and reports a second time when it is through. stop() is the one that stops.
    void cancel();

private:
    std::vector<std::string> wordDictionary() const override { return info_.wordDictionary; }

    TWFilesCleanerInfo info_;
};
