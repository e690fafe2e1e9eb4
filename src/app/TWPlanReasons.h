#pragma once

#include "cleaners/TWPlan.h"

// What the numbers of rules and words in a plan stand for. A copy may be used on any thread.
struct TWPlanReasons {
    std::string other; // why an item is planned that no rule names
    std::vector<std::string> rules;
    std::vector<std::string> names; // of the rules, as the user knows them
    std::vector<std::string> words;

    // "rule 3: contents of ~/Downloads", and the word that matched or "".
    std::string rule(const TWPlannedItem&) const;
    std::string word(const TWPlannedItem&) const;

    // "Thumbnails" or, for a rule that the user has not named, "contents of ~/Downloads".
    std::string ruleName(const TWPlannedItem&) const;

    // Of an item that is no path: "process 4711", or where the volume is mounted.
    static std::string which(const TWPlan&, const TWPlannedItem&);

    // Why a run would leave the item of the plan alone, or "".
    static std::string refusal(const TWPlan&, const TWPlannedItem&);
};
