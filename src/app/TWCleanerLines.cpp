#include "app/TWCleanerLines.h"

#include "support/TWText.h"

namespace {

constexpr auto ComesLater = "Comes in a later version";
constexpr auto StatusAndSummary = "%@: %@";
constexpr auto AndRefused = "%@, %@ refused";
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
        summarizer_ = std::make_unique<TWPlanSummarizer>(std::move(cleaner), cleaners_.deletion.runLoop,
            cleaners_.deletion.fileSystem, [this, &row](const TWPlanSummary& summary) {
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
