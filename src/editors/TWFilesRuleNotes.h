#pragma once

#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWFilesRule.h"
#include "editors/TWRuleNotes.h"

// What each Files rule would delete now and what is wrong with it. Main thread.
class TWFilesRuleNotes final {
public:
    TWFilesRuleNotes(const TWCleanerContext&, std::function<void()> changed);

    // Determines the notes that are not known yet. Cancels the work for an earlier list.
    void find(const std::vector<TWFilesRule>&, const std::vector<std::string>& words);

    // Cancels the work and forgets all results.
    void clear() { notes_.clear(); }

    TWRuleNote note(const TWFilesRule&, const std::vector<std::string>& words) const;

    // One clause about the first active rule that would empty the home folder, or "".
    static std::string warningAboutHome(const std::vector<TWFilesRule>&, const TWPlaces&);

    // One clause about the first word that is so short that it stands in a great many names, or "".
    static std::string warningAboutWords(const std::vector<std::string>& words);

private:
    std::string mistake(const TWFilesRule&) const;
    std::string key(const TWFilesRule&) const;
    std::unique_ptr<TWCleaner> cleaner(TWFilesRule) const;

    TWCleanerContext cleaners_;
    std::vector<std::string> words_;
    std::uint64_t wordsNumber_ = 0; // of the list of words, because notes depend on it
    TWRuleNotes notes_;
};
