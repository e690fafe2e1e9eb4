#include "editors/TWRuleNotes.h"

TWRuleNotes::TWRuleNotes(const TWDeletionTools& tools, std::function<void()> changed)
    : tools_(tools)
    , changed_(std::move(changed))
{
}

void TWRuleNotes::find(std::vector<Wanted> wanted)
{
    summarizer_.reset();
    waiting_.clear();
    for (auto& each : wanted) {
        if (!found_.contains(each.key))
            waiting_.push_back(std::move(each));
    }
    findLater();
}

void TWRuleNotes::findLater()
{
    next_ = tools_.runLoop.after(TWRunLoop::Duration(0), [this] { findNext(); });
}

void TWRuleNotes::findNext()
{
    summarizer_.reset();
    if (waiting_.empty())
        return;
    summarizer_ = std::make_unique<TWPlanSummarizer>(
        waiting_.front().cleaner(), tools_.runLoop, tools_.fileSystem, [this](const TWPlanSummary& summary) {
            found_[waiting_.front().key] = waiting_.front().describe(summary);
            waiting_.pop_front();
            findLater();
            changed_();
        });
}

void TWRuleNotes::clear()
{
    summarizer_.reset();
    next_.reset();
    waiting_.clear();
    found_.clear();
}

TWRuleNote TWRuleNotes::note(const std::string& key) const
{
    const auto found = found_.find(key);
    return found == found_.end() ? TWRuleNote() : found->second;
}
