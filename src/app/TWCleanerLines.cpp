#include "app/TWCleanerLines.h"

#include "deletion/TWFileDeleter.h"
#include "support/TWText.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr auto ComesLater = "Comes in a later version";
constexpr auto StatusAndSummary = "%@: %@";
constexpr auto AndRefused = "%@, %@ refused";
constexpr auto ItemsAndSize = "%@, %@";
constexpr auto Nothing = "Nothing to clean now";
constexpr auto AllRefused = "%@ refused: %@";
constexpr auto ItemsAndWarning = "%@; %@";

constexpr TWRunLoop::Duration WatchInterval{ 2000 };
constexpr TWRunLoop::Duration ShortestAge{ 10'000 }; // of lines that are determined again
constexpr int AgePerEffort = 50;

bool looksAlike(const TWFileLook& one, const TWFileLook& other)
{
    return one.presence == other.presence && one.facts.identity == other.facts.identity
        && one.facts.changed == other.facts.changed;
}

std::string itemsText(const TWCleanerRow& row, const TWPlanSummary& summary)
{
    const auto refused = TWText::count(summary.refused, "item", "items");
    if (summary.items == 0)
        return summary.refused ? TWText::fill(AllRefused, { refused, summary.objection }) : row.nothing;
    const auto items = summary.itemsAndSize();
    return summary.refused ? TWText::fill(AndRefused, { items, std::to_string(summary.refused) }) : items;
}

// What is worst takes the place of the rest. The numbers come before a warning, because a long one is shortened.
std::string summaryText(const TWCleanerRow& row, const TWPlanSummary& summary, const std::string& warning)
{
    if (summary.failure)
        return *summary.failure;
    if (summary.incomplete)
        return summary.remark;
    const auto items = itemsText(row, summary);
    return warning.empty() ? items : TWText::fill(ItemsAndWarning, { items, warning });
}

}

std::string TWCleanerLines::Sum::text() const
{
    const auto text = numbers.items == 0 ? Nothing : numbers.itemsAndSize();
    const auto warned = TWText::count(warnings, "warning", "warnings");
    return warnings == 0 ? text : TWText::fill(ItemsAndSize, { text, warned });
}

TWCleanerLines::TWCleanerLines(const TWCleanerContext& cleaners, const TWSettingsSources& sources, Changed changed)
    : cleaners_(cleaners)
    , sources_(sources)
    , changed_(std::move(changed))
{
}

void TWCleanerLines::refresh()
{
    summarizer_.reset();
    begin();
    watching_ = cleaners_.deletion.runLoop.every(WatchInterval, [this] { watch(); });
    // Several calls within one turn cause one refresh.
    next_ = cleaners_.deletion.runLoop.after(TWRunLoop::Duration(0), [this] { summarizeNext(); });
}

void TWCleanerLines::begin()
{
    again_.reset();
    begun_ = cleaners_.deletion.runLoop.now();
    waiting_.resize(TWCleanerCount);
    std::iota(waiting_.begin(), waiting_.end(), 0);
}

std::optional<TWCleanerLines::Sum> TWCleanerLines::sum(const std::array<bool, TWCleanerCount>& chosen) const
{
    Sum all;
    for (std::size_t position = 0; position < chosen.size(); ++position) {
        if (!chosen[position])
            continue;
        if (!sums_[position])
            return std::nullopt;
        all.numbers += sums_[position]->numbers;
        all.warnings += sums_[position]->warnings;
    }
    return all;
}

void TWCleanerLines::pause()
{
    summarizer_.reset();
    next_.reset();
    watching_.reset();
    again_.reset();
}

TWFileLook TWCleanerLines::lookAtWatched(int position) const
{
    const auto folder = TWCleanerTable()[static_cast<std::size_t>(position)].watchedFolder(sources_);
    return folder.empty() ? TWFileLook() : cleaners_.deletion.fileSystem.look(folder, TWLinkAtEnd::Follow);
}

void TWCleanerLines::watch()
{
    const bool idle = waiting_.empty() && !summarizer_;
    for (int position = 0; position < TWCleanerCount; ++position) {
        const bool waits = std::find(waiting_.begin(), waiting_.end(), position) != waiting_.end();
        if (!waits && !looksAlike(lookAtWatched(position), watched_[static_cast<std::size_t>(position)]))
            waiting_.push_back(position);
    }
    if (idle)
        summarizeNext();
}

void TWCleanerLines::summarizeNext()
{
    summarizer_.reset();
    while (!waiting_.empty() && !summarizer_) {
        const int position = waiting_.front();
        waiting_.pop_front();
        if (TWCleanerTable()[static_cast<std::size_t>(position)].available)
            summarize(position);
        else
            changed_(position, ComesLater);
    }
    if (!summarizer_ && !again_)
        beginAgainLater();
}

void TWCleanerLines::beginAgainLater()
{
    auto& runLoop = cleaners_.deletion.runLoop;
    const auto taken = std::chrono::ceil<TWRunLoop::Duration>(runLoop.now() - begun_);
    again_ = runLoop.after(std::max(ShortestAge, AgePerEffort * taken), [this] {
        begin();
        summarizeNext();
    });
}

void TWCleanerLines::summarize(int position)
{
    const auto at = static_cast<std::size_t>(position);
    const auto& row = TWCleanerTable()[at];
    auto cleaner = row.make(cleaners_);
    row.giveInfo(*cleaner, sources_);
    const bool warns = !cleaner->validate().empty() || !row.listWarning(sources_).empty();
    watched_[at] = lookAtWatched(position);
    summarizer_ = std::make_unique<TWPlanSummarizer>(std::move(cleaner), cleaners_.deletion.runLoop,
        cleaners_.deletion.fileSystem, [this, position, at, &row, warns](const TWPlanSummary& summary) {
            const bool harmless = !warns && !summary.failure && !summary.incomplete && summary.refused == 0;
            sums_[at] = { summary, harmless ? 0U : 1U };
            changed_(position, line(row, summary));
            next_ = cleaners_.deletion.runLoop.after(TWRunLoop::Duration(0), [this] { summarizeNext(); });
        });
}

std::string TWCleanerLines::line(const TWCleanerRow& row, const TWPlanSummary& summary) const
{
    const auto status = row.listStatus(sources_);
    const auto text = summaryText(row, summary, row.listWarning(sources_));
    return status.empty() ? text : TWText::fill(StatusAndSummary, { status, text });
}
