#include "editors/TWRuleNotes.h"

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

}

TWRuleNotes::TWRuleNotes(const TWCleanerContext& cleaners, std::function<void()> changed)
    : cleaners_(cleaners)
    , changed_(std::move(changed))
{
}

void TWRuleNotes::find(const std::vector<TWFilesRule>& rules, const std::vector<std::string>& words)
{
    summarizer_.reset();
    waiting_.clear();
    if (words != std::exchange(words_, words))
        std::erase_if(found_, [](const auto& entry) {
            return entry.first.second == TWItemsWithKeywords || entry.first.second == TWItemsWithKeywordsDeep;
        });
    for (const auto& rule : rules) {
        if (mistake(rule).empty() && !found_.contains({ rule.filePath, rule.whatToDelete }))
            waiting_.push_back(rule);
    }
    next_ = cleaners_.deletion.runLoop.after(TWRunLoop::Duration(0), [this] { findNext(); });
}

void TWRuleNotes::findNext()
{
    summarizer_.reset();
    if (waiting_.empty())
        return;
    auto rule = waiting_.front();
    rule.active = true;
    TWFilesCleanerInfo info;
    info.filesArray = std::make_shared<std::vector<TWFilesRule>>(1, rule);
    if (rule.needsKeywords())
        info.wordDictionary = words_;
    auto cleaner = std::make_unique<TWFilesCleaner>(cleaners_);
    cleaner->setInfo(std::move(info));
    summarizer_ = std::make_unique<TWPlanSummarizer>(std::move(cleaner), cleaners_.deletion.runLoop,
        cleaners_.deletion.fileSystem, [this, rule](const TWPlanSummary& summary) {
            found_[{ rule.filePath, rule.whatToDelete }] = noteFrom(rule, summary);
            waiting_.pop_front();
            next_ = cleaners_.deletion.runLoop.after(TWRunLoop::Duration(0), [this] { findNext(); });
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

TWRuleNote TWRuleNotes::noteFrom(const TWFilesRule& rule, const TWPlanSummary& summary)
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

TWRuleNote TWRuleNotes::note(const TWFilesRule& rule, const std::vector<std::string>& words) const
{
    if (auto text = mistake(rule); !text.empty())
        return { std::move(text), true };
    const auto found = found_.find({ rule.filePath, rule.whatToDelete });
    auto note = found == found_.end() ? TWRuleNote() : found->second;
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

std::string TWRuleNotes::warningAboutHome(const std::vector<TWFilesRule>& rules, const TWPlaces& places)
{
    const auto found
        = std::ranges::find_if(rules, [&](const auto& rule) { return rule.active && emptiesHome(rule, places); });
    return found == rules.end() ? "" : TWText::fill(RuleForHome, { std::to_string(found - rules.begin() + 1) });
}

std::string TWRuleNotes::warningAboutWords(const std::vector<std::string>& words)
{
    const auto shortWord = std::find_if(
        words.begin(), words.end(), [](const auto& word) { return !word.empty() && characters(word) <= 2; });
    return shortWord == words.end() ? "" : TWText::fill(ShortWord, { *shortWord });
}

// Returns what is wrong with a rule, as far as that can be said without a look at the disk, or "".
std::string TWRuleNotes::mistake(const TWFilesRule& rule) const
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
