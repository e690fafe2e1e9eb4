#pragma once

#include "cleaners/TWFilesRule.h"
#include "deletion/TWDeletionGuard.h"
#include "platform/TWRunLoop.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

// What the Files editor says about a rule, beside it.
struct TWRuleNote {
    std::string text; // "" while nothing is known yet
    bool warning = false; // something is wrong with the rule
};

// What each rule matches now, counted in the background, and what is wrong with it. Main thread.
class TWRuleNotes final {
public:
    TWRuleNotes(
        TWRunLoop&, const TWFileSystem&, const TWPlaces&, const TWDeletionGuard&, std::function<void()> changed);

    // Counts the rules that have not been counted yet; what is still being counted for an earlier list is given up.
    void count(const std::vector<TWFilesRule>&, const std::vector<std::string>& words);

    // The list has changed: whether the guard refuses a rule is asked anew, once for each.
    void forgetRefusals() { refusals_.clear(); }

    // Ends the counting and forgets everything.
    void clear();

    TWRuleNote note(const TWFilesRule&, const std::vector<std::string>& words);

private:
    // All that a count depends on besides the words.
    using Key = std::pair<std::string, std::int64_t>;
    struct Progress;

    std::string mistake(const TWFilesRule&, const std::vector<std::string>& words) const;
    bool isGuarded(const TWFilesRule&) const;
    const std::string& refusal(const TWFilesRule&);
    void take(Progress&);

    TWRunLoop& runLoop_;
    const TWFileSystem& fileSystem_;
    const TWPlaces& places_;
    const TWDeletionGuard& guard_;
    std::function<void()> changed_;
    std::map<Key, TWRuleNote> counted_;
    std::map<Key, std::string> refusals_; // "" for a rule that is not refused
    std::unique_ptr<TWRunLoopHandle> counting_;
};
