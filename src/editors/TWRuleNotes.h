#pragma once

#include "cleaners/TWPlanSummary.h"

#include <deque>
#include <map>

// The note beside a rule in an editor.
struct TWRuleNote {
    std::string text; // "" while nothing is known yet
    bool warning = false; // the rule does less or more than it should
};

// Determines in the background what each rule of a list would do now, by planning it alone with its cleaner. Main
// thread.
class TWRuleNotes final {
public:
    struct Wanted {
        std::string key; // of everything that the note depends on; any bytes
        std::function<std::unique_ptr<TWCleaner>()> cleaner; // with this rule only, active
        std::function<TWRuleNote(const TWPlanSummary&)> describe;
    };

    TWRuleNotes(const TWDeletionTools&, std::function<void()> changed);

    // Determines the notes that are not known yet. Cancels the work for an earlier list.
    void find(std::vector<Wanted>);

    // Cancels the work and forgets all results.
    void clear();

    // Empty while it is not known.
    TWRuleNote note(const std::string& key) const;

private:
    void findNext();
    void findLater();

    const TWDeletionTools tools_;
    std::function<void()> changed_;
    std::map<std::string, TWRuleNote> found_;
    std::deque<Wanted> waiting_;
    std::unique_ptr<TWPlanSummarizer> summarizer_; // for the first waiting rule
    std::unique_ptr<TWRunLoopHandle> next_;
};
