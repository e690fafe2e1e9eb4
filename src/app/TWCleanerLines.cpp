#include "app/TWCleanerLines.h"

#include "support/TWText.h"

namespace {

constexpr auto ComesLater = "Comes in a later version";
constexpr auto StatusAndSummary = "%@: %@";
constexpr auto AndRefused = "%@, %@ refused";
constexpr auto ItemsAndSize = "%@, %@";
constexpr auto Nothing = "Nothing to clean now";
constexpr auto AllRefused = "%@ refused: %@";

std::string summaryText(const TWCleanerRow& row, const TWPlanSummary& summary)
{
    if (summary.failure)
        return *summary.failure;
    if (summary.incomplete)
        return summary.remark;
    const auto refused = TWText::count(summary.refused, "item", "items");
    if (summary.items == 0)
        return summary.refused ? TWText::fill(AllRefused, { refused, summary.objection }) : row.nothing;
    const auto items = summary.itemsAndSize();
    return summary.refused ? TWText::fill(AndRefused, { items, std::to_string(summary.refused) }) : items;
}

}

std::string TWCleanerLines::Sum::text() const
{
    const auto size = TWText::size(bytes);
    const auto text
        = items == 0 ? Nothing : TWText::fill(ItemsAndSize, { TWText::count(items, "item", "items"), size });
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
    position_ = -1;
    // Several calls within one turn cause one refresh.
    next_ = cleaners_.deletion.runLoop.after(TWRunLoop::Duration(0), [this] { summarizeNext(); });
}

std::optional<TWCleanerLines::Sum> TWCleanerLines::sum(const std::array<bool, TWCleanerCount>& chosen) const
{
    Sum all;
    for (std::size_t position = 0; position < chosen.size(); ++position) {
        if (!chosen[position])
            continue;
        if (!sums_[position])
            return std::nullopt;
        all.items += sums_[position]->items;
        all.bytes += sums_[position]->bytes;
        all.warnings += sums_[position]->warnings;
    }
    return all;
}

void TWCleanerLines::pause()
{
    summarizer_.reset();
    next_.reset();
}

void TWCleanerLines::summarizeNext()
{
    while (++position_ < TWCleanerCount) {
        const auto& row = TWCleanerTable()[static_cast<std::size_t>(position_)];
        if (!row.available) {
            changed_(position_, ComesLater);
            continue;
        }
        auto cleaner = row.make(cleaners_);
        row.giveInfo(*cleaner, sources_);
        const bool warns = !cleaner->validate().empty();
        summarizer_ = std::make_unique<TWPlanSummarizer>(std::move(cleaner), cleaners_.deletion.runLoop,
            cleaners_.deletion.fileSystem, [this, &row, warns](const TWPlanSummary& summary) {
                const bool harmless = !warns && !summary.failure && !summary.incomplete && summary.refused == 0;
                sums_[static_cast<std::size_t>(position_)] = { summary.items, summary.bytes, harmless ? 0U : 1U };
                changed_(position_, line(row, summary));
                next_ = cleaners_.deletion.runLoop.after(TWRunLoop::Duration(0), [this] { summarizeNext(); });
            });
        return;
    }
    summarizer_.reset();
}

std::string TWCleanerLines::line(const TWCleanerRow& row, const TWPlanSummary& summary) const
{
    const auto status = row.listStatus(sources_);
    const auto text = summaryText(row, summary);
    return status.empty() ? text : TWText::fill(StatusAndSummary, { status, text });
}
