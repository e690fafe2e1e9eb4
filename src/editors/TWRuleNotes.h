#pragma once

#include "cleaners/TWFilesRule.h"
#include "deletion/TWDeletionGuard.h"
#include "platform/TWRunLoop.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

// The note beside a rule in the Files editor.
struct TWRuleNote {
    std::string text; // "" while nothing is known yet
    bool warning = false; // something is wrong with the rule
};

// Counts in the background what each rule matches now, and says what is wrong with a rule. Main thread.
class TWRuleNotes final {
public:
    TWRuleNotes(
        TWRunLoop&, const TWFileSystem&, const TWPlaces&, const TWDeletionGuard&, std::function<void()> changed);

    // Counts the rules that have not been counted yet. Cancels the counting of an earlier list.
    void count(const std::vector<TWFilesRule>&, const std::vector<std::string>& words);

    // Call this when the list has changed: the guard is then asked again about each rule, once.
    void forgetRefusals() { refusals_.clear(); }

    // Cancels the counting and forgets all results.
    void clear();

    TWRuleNote note(const TWFilesRule&, const std::vector<std::string>& words);

private:
    // Apart from the words, a count depends on these only: path and kind.
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
