#include "editors/TWFilesRuleNotes.h"

#include "cleaners/TWFilesCleaner.h"
#include "deletion/TWKeepRules.h"
#include "support/TWText.h"

#include <algorithm>
#include <utility>

namespace {

constexpr auto NoPath = "No path yet: this rule finds nothing.";
constexpr auto Refused = "Will be refused: %@";
constexpr auto Kept = "Kept: %@";
constexpr auto AllKept = "Everything in it is kept or refused: %@";
constexpr auto SomeRefused = "%@; %@ will be refused: %@";
constexpr auto WholeHome = "This would delete everything in your home folder.";
constexpr auto RuleForHome = "rule %@ would delete everything in your home folder";
constexpr auto NoWords = "There are no words in the dictionary: this rule finds nothing.";
constexpr auto ShortWord = "the word \"%@\" is short and stands in a great many names";
constexpr auto WarningAndNote = "%@; %@";
constexpr auto NothingThere = "Nothing there now";
constexpr auto NothingFound = "Nothing found now";
constexpr auto StopsTheRun = "%@ The whole Files cleaning would stop here.";
constexpr auto NotAKind = "This kind of rule does nothing.";

// Counts characters, not bytes: every byte except UTF-8 continuation bytes begins a character.
std::size_t characters(const std::string& word)
{
    return static_cast<std::size_t>(
        std::count_if(word.begin(), word.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

bool emptiesHome(const TWFilesRule& rule, const TWPlaces& places)
{
    return rule.whatToDelete == TWFolderContents && places.standardize(rule.filePath) == places.home;
}

// Nothing of the rule would be deleted.
std::string allRefusedText(const TWFilesRule& rule, const TWObjection& objection)
{
    const auto* text = rule.whatToDelete == TWItemItself ? Kept : AllKept;
    return TWText::fill(TWKeepRules::isReason(objection) ? text : Refused, { objection });
}

std::string itemsText(const TWFilesRule& rule, const TWPlanSummary& summary)
{
    if (summary.items == 0)
        return rule.whatToDelete == TWItemItself ? NothingThere : NothingFound;
    return summary.itemsAndSize();
}

TWRuleNote noteFrom(const TWFilesRule& rule, const TWPlanSummary& summary)
{
    if (summary.failure)
        return { TWText::fill(StopsTheRun, { *summary.failure }), true };
    if (summary.incomplete)
        return { summary.remark, true };
    if (summary.refused > 0 && summary.items == 0)
        return { allRefusedText(rule, summary.objection), true };
    const auto items = itemsText(rule, summary);
    if (summary.refused > 0)
        return { TWText::fill(SomeRefused, { items, std::to_string(summary.refused), summary.objection }), true };
    return { items, false };
}

}

TWFilesRuleNotes::TWFilesRuleNotes(const TWCleanerContext& cleaners, std::function<void()> changed)
    : cleaners_(cleaners)
    , notes_(cleaners.deletion, std::move(changed))
{
}

void TWFilesRuleNotes::find(const std::vector<TWFilesRule>& rules, const std::vector<std::string>& words)
{
    if (words != std::exchange(words_, words))
        ++wordsNumber_;
    std::vector<TWRuleNotes::Wanted> wanted;
    for (const auto& rule : rules) {
        if (!mistake(rule).empty())
            continue;
        wanted.push_back({ key(rule), [this, rule] { return cleaner(rule); },
            [rule](const TWPlanSummary& summary) { return noteFrom(rule, summary); } });
    }
    notes_.find(std::move(wanted));
}

std::unique_ptr<TWCleaner> TWFilesRuleNotes::cleaner(TWFilesRule rule) const
{
    rule.active = true;
    TWFilesCleanerInfo info;
    if (rule.needsKeywords())
        info.wordDictionary = words_;
    info.filesArray = std::make_shared<std::vector<TWFilesRule>>(1, std::move(rule));
    auto cleaner = std::make_unique<TWFilesCleaner>(cleaners_);
    cleaner->setInfo(std::move(info));
    return cleaner;
}

std::string TWFilesRuleNotes::key(const TWFilesRule& rule) const
{
    const auto words = rule.needsKeywords() ? wordsNumber_ : 0;
    return std::to_string(rule.whatToDelete) + " " + std::to_string(words) + " " + rule.filePath;
}

TWRuleNote TWFilesRuleNotes::note(const TWFilesRule& rule, const std::vector<std::string>& words) const
{
    if (auto text = mistake(rule); !text.empty())
        return { std::move(text), true };
    auto note = notes_.note(key(rule));
    if (!rule.needsKeywords())
        return note;
    // A folder that is missing or cannot be read ends the whole cleaning, with words or without.
    const bool noWords = std::all_of(words.begin(), words.end(), [](const auto& word) { return word.empty(); });
    if (noWords)
        return note.warning ? note : TWRuleNote{ NoWords, true };
    if (const auto warning = warningAboutWords(words); !warning.empty())
        note = { note.text.empty() ? warning : TWText::fill(WarningAndNote, { warning, note.text }), true };
    return note;
}

std::string TWFilesRuleNotes::warningAboutHome(const std::vector<TWFilesRule>& rules, const TWPlaces& places)
{
    const auto found
        = std::ranges::find_if(rules, [&](const auto& rule) { return rule.active && emptiesHome(rule, places); });
    return found == rules.end() ? "" : TWText::fill(RuleForHome, { std::to_string(found - rules.begin() + 1) });
}

std::string TWFilesRuleNotes::warningAboutWords(const std::vector<std::string>& words)
{
    const auto shortWord = std::find_if(
        words.begin(), words.end(), [](const auto& word) { return !word.empty() && characters(word) <= 2; });
    return shortWord == words.end() ? "" : TWText::fill(ShortWord, { *shortWord });
}

// Returns what is wrong with a rule, as far as that can be said without a look at the disk, or "".
std::string TWFilesRuleNotes::mistake(const TWFilesRule& rule) const
{
    const auto& places = cleaners_.deletion.places;
    if (rule.filePath.empty())
        return NoPath;
    if (rule.whatToDelete == TWItemItself)
        return "";
    if (rule.whatToDelete == TWFolderContents)
        return emptiesHome(rule, places) ? WholeHome : "";
    return rule.needsKeywords() ? "" : NotAKind;
}
