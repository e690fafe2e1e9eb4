#pragma once

#include "cleaners/TWCleaner.h"
#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWPreferenceFile.h"
#include "cleaners/TWRecentItemsRule.h"
#include "platform/TWBackgroundStream.h"

struct TWRecentItemsCleanerInfo {
    TWRecentItemsRuleList recentItemsArray; // the editor's live list; nullptr counts as empty
    std::vector<std::string> problems; // of a list that could not be read; with any, the job cannot succeed
};

// Removes the entries that the active rules name from other programs' preference files, or deletes the whole file.
// Files are read and written in the background, one after the other. Main thread.
class TWRecentItemsCleaner final : public TWCleaner, private TWFileDeleterDelegate {
public:
    explicit TWRecentItemsCleaner(const TWCleanerContext&);

    void setInfo(TWRecentItemsCleanerInfo info) { info_ = std::move(info); }
    const TWRecentItemsCleanerInfo& info() const { return info_; }

    std::string validate() override;
    std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown, PlanMade) const override;
    TWOutcome outcome() const override { return outcome_; }

private:
    using Keys = std::vector<std::size_t>; // items of the plan: the keys of one file
    using Lines = std::vector<TWReportLine>;

    // What has become of one file.
    struct Edited {
        TWPreferenceFile::Removed removed;
        std::string refusal; // "" or why the file was left alone
    };

    void perform(TWPlannedJob) override;
    TWProgress performed() const override;
    void stopPerforming() override;
    void dropJob() override;
    void fileDeleterDone() override;

    void sayNextLines();
    void carryOutNext();
    void go(std::size_t item, Lines);
    void deleteFile();
    void deletionChecked(TWPresence);
    void noteDeletion(const TWPlannedItem&, bool gone);
    std::size_t endOfFile() const;
    void removeEntries(const Keys&);
    static Edited edit(const TWCleanerContext&, const TWDeletionTarget&, const TWDeletionRules&,
        const std::vector<std::string>& keys, const TWPreferenceFile::Found* seen, const TWCancellation&);
    void edited(const Keys&, const Edited&);
    Lines linesOf(const Keys&, const Edited&) const;
    bool isTicked(std::size_t item) const;
    bool isCut(std::size_t item) const;
    bool isCounted(std::size_t item) const;
    void finishJob();

    const TWCleanerContext context_;
    TWRecentItemsCleanerInfo info_;
    std::unique_ptr<TWFileDeleter> fileDeleter_; // a new one for each job
    TWPlannedJob job_; // the latest
    TWSecureMode secureMode_ = TWPlainDelete;
    std::size_t item_ = 0; // the next one
    std::size_t line_ = 0; // the next one
    std::size_t done_ = 0; // items of the progress
    bool success_ = true; // what the rules have said so far
    bool complete_ = true; // everything could be looked at
    bool stopping_ = false;
    TWOutcome outcome_; // of the latest job
    std::string label_; // of the deletion that is going on
    std::unique_ptr<TWBackgroundStream<Edited>> editing_;
    std::unique_ptr<TWBackgroundStream<TWPresence>> looking_;
};
