#pragma once

#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWFilesRule.h"
#include "cleaners/TWPlanSummary.h"

#include <deque>
#include <map>

// What the Files editor says beside a rule.
struct TWRuleNote {
    std::string text; // "" while nothing is known yet
    bool warning = false; // the rule does less or more than it should
};

// What each rule would do now: the cleaner plans each one in the background. Main thread.
class TWRuleNotes final {
public:
    TWRuleNotes(const TWCleanerContext&, std::function<void()> changed);

    // Finds out about the rules that are not known yet; what is still being found out for an earlier list is dropped.
    void find(const std::vector<TWFilesRule>&, const std::vector<std::string>& words);

    // Drops everything.
    void clear();

    TWRuleNote note(const TWFilesRule&, const std::vector<std::string>& words) const;

private:
    // All that a note depends on besides the words.
    using Key = std::pair<std::string, std::int64_t>;

    std::string mistake(const TWFilesRule&, const std::vector<std::string>& words) const;
    void findNext();
    static TWRuleNote noteFrom(const TWFilesRule&, const TWPlanSummary&);

    TWCleanerContext cleaners_;
    std::function<void()> changed_;
    std::map<Key, TWRuleNote> found_;
    std::deque<TWFilesRule> waiting_;
    std::vector<std::string> words_;
    std::unique_ptr<TWPlanSummarizer> summarizer_; // of the first rule that waits
    std::unique_ptr<TWRunLoopHandle> next_;
};
