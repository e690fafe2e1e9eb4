#pragma once

#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWFilesRule.h"
#include "cleaners/TWPlanSummary.h"

#include <deque>
#include <map>

// The note beside a rule in the Files editor.
struct TWRuleNote {
    std::string text; // "" while nothing is known yet
    bool warning = false; // the rule does less or more than it should
};

// Determines in the background what each rule would delete now and what is wrong with it, by planning each rule with
// the cleaner. Main thread.
class TWRuleNotes final {
public:
    TWRuleNotes(const TWCleanerContext&, std::function<void()> changed);

    // Determines the notes that are not known yet. Cancels the work for an earlier list.
    void find(const std::vector<TWFilesRule>&, const std::vector<std::string>& words);

    // Cancels the work and forgets all results.
    void clear();

    TWRuleNote note(const TWFilesRule&, const std::vector<std::string>& words) const;

    // One clause about the first active rule that would empty the home folder, or "".
    static std::string warningAboutHome(const std::vector<TWFilesRule>&, const TWPlaces&);

    // One clause about the first word that is so short that it stands in a great many names, or "".
    static std::string warningAboutWords(const std::vector<std::string>& words);

private:
    // Apart from the words, a note depends on these only: path and kind.
    using Key = std::pair<std::string, std::int64_t>;

    std::string mistake(const TWFilesRule&) const;
    void findNext();
    static TWRuleNote noteFrom(const TWFilesRule&, const TWPlanSummary&);

    TWCleanerContext cleaners_;
    std::function<void()> changed_;
    std::map<Key, TWRuleNote> found_;
    std::deque<TWFilesRule> waiting_;
    std::vector<std::string> words_;
    std::unique_ptr<TWPlanSummarizer> summarizer_; // for the first waiting rule
    std::unique_ptr<TWRunLoopHandle> next_;
};
