#include "editors/TWRuleNotes.h"

#include "cleaners/TWFilesCleaner.h"
#include "platform/TWTreeSizes.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <mutex>

namespace {

constexpr auto NoPath = "No path yet: this rule finds nothing.";
constexpr auto Refused = "Will be refused: %@";
constexpr auto WholeHome = "This would delete everything in your home folder.";
constexpr auto NoWords = "There are no words in the dictionary: this rule finds nothing.";
constexpr auto ShortWord = "The word \"%@\" is short: it stands in a great many names.";
constexpr auto NothingThere = "Nothing there now";
constexpr auto NothingFound = "Nothing found now";
constexpr auto StopsTheRun = "%@ The whole Files cleaning would stop here.";
constexpr auto NotAKind = "This kind of rule does nothing.";
constexpr auto ItemsAndSize = "%@, %@";

// Letters, not bytes: a character's first byte is any that does not continue one.
std::size_t characters(const std::string& word)
{
    return static_cast<std::size_t>(
        std::count_if(word.begin(), word.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

TWRuleNote countedNote(TWFilesRule rule, const TWKeywordMatcher& keywords, const TWPlaces& places,
    const TWFileSystem& fileSystem, const TWCancellation& cancellation)
{
    rule.active = true;
    const auto plan = TWFilesCleaner::plan(
        { rule }, keywords, places, fileSystem, [](const std::string&) {}, cancellation);
    if (plan.failure)
        return { TWText::fill(StopsTheRun, { *plan.failure }), true };
    if (plan.paths.empty())
        return { rule.whatToDelete == TWItemItself ? NothingThere : NothingFound, false };
    const auto total = TWAddUpTrees(fileSystem, plan.paths, cancellation).total();
    return { TWText::fill(ItemsAndSize, { TWText::count(total.items, "item", "items"), TWText::size(total.bytes) }),
        false };
}

}

// Notes on their way from the worker to the main thread.
struct TWRuleNotes::Progress {
    // True when a call to take them has to be posted: one is on its way as long as there are notes.
    bool add(Key key, TWRuleNote note)
    {
        const std::lock_guard lock(mutex);
        notes.emplace_back(std::move(key), std::move(note));
        return notes.size() == 1;
    }

    std::mutex mutex;
    std::vector<std::pair<Key, TWRuleNote>> notes;
};

TWRuleNotes::TWRuleNotes(TWRunLoop& runLoop, const TWFileSystem& fileSystem, const TWPlaces& places,
    const TWDeletionGuard& guard, std::function<void()> changed)
    : runLoop_(runLoop)
    , fileSystem_(fileSystem)
    , places_(places)
    , guard_(guard)
    , changed_(std::move(changed))
{
}

// Hops to another thread with copies; the notes come back by posting, several at a time when they come fast.
void TWRuleNotes::count(const std::vector<TWFilesRule>& rules, const std::vector<std::string>& words)
{
    std::vector<TWFilesRule> wanted;
    for (const auto& rule : rules) {
        // A rule for the home folder or one above it is refused, and counting it would take as long as all the others
        // together.
        if (rule.whatToDelete == TWItemItself && TWPath::isAtOrBelow(places_.home, places_.standardize(rule.filePath)))
            continue;
        if (mistake(rule, words).empty() && !counted_.contains({ rule.filePath, rule.whatToDelete }))
            wanted.push_back(rule);
    }
    auto progress = std::make_shared<Progress>();
    auto work = [this, wanted = std::move(wanted), words, places = places_, &fileSystem = fileSystem_,
                    &runLoop = runLoop_, progress](const std::shared_ptr<const TWCancellation>& cancellation) {
        const TWKeywordMatcher keywords(words);
        for (const auto& rule : wanted) {
            auto note = countedNote(rule, keywords, places, fileSystem, *cancellation);
            if (cancellation->cancelled())
                return;
            if (!progress->add({ rule.filePath, rule.whatToDelete }, std::move(note)))
                continue;
            runLoop.post([this, progress, cancellation] {
                if (!cancellation->cancelled())
                    take(*progress);
            });
        }
    };
    counting_ = runLoop_.inBackground(std::move(work), [] {});
}

void TWRuleNotes::clear()
{
    counting_.reset();
    counted_.clear();
    refusals_.clear();
}

void TWRuleNotes::take(Progress& progress)
{
    {
        const std::lock_guard lock(progress.mutex);
        for (auto& [key, note] : progress.notes)
            counted_[key] = std::move(note);
        progress.notes.clear();
    }
    changed_();
}

TWRuleNote TWRuleNotes::note(const TWFilesRule& rule, const std::vector<std::string>& words)
{
    if (auto text = mistake(rule, words); !text.empty())
        return { std::move(text), true };
    if (isGuarded(rule) && !refusal(rule).empty())
        return { refusal(rule), true };
    const auto found = counted_.find({ rule.filePath, rule.whatToDelete });
    return found == counted_.end() ? TWRuleNote() : found->second;
}

// The guard judges the path itself only where the rule deletes it, or where it is none.
bool TWRuleNotes::isGuarded(const TWFilesRule& rule) const
{
    const auto path = places_.standardize(rule.filePath);
    return path.empty() || path.front() != '/' || rule.whatToDelete == TWItemItself;
}

// Asks the disk, and is asked at every repaint: the answer is kept.
const std::string& TWRuleNotes::refusal(const TWFilesRule& rule)
{
    const auto [place, added] = refusals_.try_emplace({ rule.filePath, rule.whatToDelete });
    if (const auto* reason = added ? guard_.reason(places_.standardize(rule.filePath)) : nullptr)
        place->second = TWText::fill(Refused, { reason });
    return place->second;
}

// What the rule's text alone says, without a look at the disk.
std::string TWRuleNotes::mistake(const TWFilesRule& rule, const std::vector<std::string>& words) const
{
    if (rule.filePath.empty())
        return NoPath;
    if (isGuarded(rule))
        return "";
    if (rule.whatToDelete == TWFolderContents)
        return places_.standardize(rule.filePath) == places_.home ? WholeHome : "";
    if (!rule.needsKeywords())
        return NotAKind;
    if (std::all_of(words.begin(), words.end(), [](const auto& word) { return word.empty(); }))
        return NoWords;
    const auto shortWord = std::find_if(
        words.begin(), words.end(), [](const auto& word) { return !word.empty() && characters(word) <= 2; });
    return shortWord == words.end() ? "" : TWText::fill(ShortWord, { *shortWord });
}
