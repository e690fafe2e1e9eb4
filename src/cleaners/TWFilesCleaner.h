#pragma once

#include "cleaners/TWCleaner.h"
#include "cleaners/TWFilesRule.h"
#include "deletion/TWFileDeleteQueue.h"

struct TWFilesCleanerInfo {
    TWFilesRuleList filesArray; // live; absent counts as empty
    TWAuthorization useAuthorization = TWAuthorization::No;
    bool securelyDeleteFiles = false;
    TWSecureMode securelyDeleteFilesMode = 0;
    std::vector<std::string> wordDictionary;
};

// What a list of rules comes to on this disk, at this moment. Made without deleting anything, on any thread.
struct TWFilesPlan {
    std::vector<std::string> paths; // in the order of deletion
    std::optional<std::string> failure; // ends the job before anything is deleted
};

// Deletes the files and folders that the active rules name. Rules are turned into paths in the background, the paths
// then deleted by a queue. Main thread.
class TWFilesCleaner final : public TWCleaner, private TWFileDeleteQueueDelegate {
public:
    using Progress = std::function<void(std::string message)>;

    explicit TWFilesCleaner(const TWDeletionTools&);
    ~TWFilesCleaner();

    void setInfo(TWFilesCleanerInfo);
    const TWFilesCleanerInfo& info() const { return info_; }

    std::string validate() override;
    void clean() override;
    void verify();

    // Kept on purpose: reports the failure and the end at once, but the queue goes on with its remaining paths and
    // reports a second time when it is through. stop() is the one that stops.
    void cancel();
    void stop() override;

    // As every cleaner's. A run searches beside the main thread; only these two make the search here, when first asked.
    bool stringContainsKeywords(std::string_view text);

    // Full paths of the items in the folder whose names contain a keyword. A matching folder is taken whole; with
    // recursive, folders that do not match are searched in turn, but never a link or a file package.
    std::vector<std::string> itemsContainingKeywordsAtPath(const std::string& path, bool recursive);

    // What clean() would delete by these rules. Any thread; asks the cancellation often and then returns what it has.
    static TWFilesPlan plan(const std::vector<TWFilesRule>& rules, const TWKeywordMatcher&, const TWPlaces&,
        const TWFileSystem&, const Progress&, const TWCancellation&);

private:
    struct Expansion;

    void fileDeleteQueueProgressed(const std::string& message) override;
    void fileDeleteQueueDone() override;
    void expand(std::vector<TWFilesRule> rules);
    void drainProgress();
    void makeKeywords();
    void endExpansion();
    void deletePlanned();
    void expanded();

    TWDeletionTools tools_;
    TWFilesCleanerInfo info_;
    bool keywordsMade_ = false; // of info_
    std::shared_ptr<Expansion> expansion_; // of the job that is going on
    std::unique_ptr<TWRunLoopHandle> background_;
    std::unique_ptr<TWRunLoopHandle> draining_; // the next turn of a long report
    std::unique_ptr<TWFileDeleteQueue> fileDeleteQueue_; // a new one for each job
};
