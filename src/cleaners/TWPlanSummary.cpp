#include "cleaners/TWPlanSummary.h"

#include "cleaners/TWPreviewTotal.h"
#include "support/TWText.h"

#include <algorithm>
#include <set>

namespace {

constexpr auto ItemsAndSize = "%@, %@";
constexpr auto EntriesInFiles = "%@ in %@";
constexpr auto CountToDo = "%@ %@";
constexpr auto SeveralReasons = "see Preview.";

std::uint64_t changedFiles(const TWPlan& plan)
{
    std::set<std::string> files;
    for (const auto& item : plan.items) {
        if (!item.keepsFile() || item.quiet || !plan.wouldDelete(item))
            continue;
        files.insert(plan.change(item).file);
    }
    return files.size();
}

TWPlanSummary summaryOf(const std::shared_ptr<const TWPlan>& plan,
    const std::shared_ptr<const std::vector<std::uint64_t>>& bytes, const TWCancellation& cancellation)
{
    TWPlanSummary summary;
    summary.failure = plan->failure;
    summary.incomplete = plan->incomplete;
    const auto isBad = [](const auto& line) { return line.effect != TWPlannedLine::Effect::None; };
    const auto& lines = plan->lines;
    const auto worst = std::find_if(lines.begin(), lines.end(), isBad);
    if (!lines.empty())
        summary.remark = (worst == lines.end() ? lines.front() : *worst).text;
    for (const auto& item : plan->items) {
        if (item.quiet || !item.objection)
            continue;
        if (summary.refused++ == 0)
            summary.objection = item.objection;
        else if (summary.objection != item.objection)
            summary.objection = SeveralReasons;
    }
    const std::vector<bool> unticked(plan->items.size());
    const auto total = TWAddUpPreview({ { plan, bytes, unticked, plan->items.size(), 0 } }, cancellation);
    summary.items = total.items;
    summary.bytes = total.bytes;
    summary.counts = total.counts;
    summary.entries = total.entries;
    summary.files = changedFiles(*plan);
    return summary;
}

}

TWPlanSummary& TWPlanSummary::operator+=(const TWPlanSummary& other)
{
    items += other.items;
    bytes += other.bytes;
    counts += other.counts;
    entries += other.entries;
    files += other.files;
    refused += other.refused;
    return *this;
}

std::string TWPlanSummary::itemsAndSize() const
{
    std::vector<std::string> parts;
    if (counts.of(TWPlannedAction::RemoveEntries) > 0)
        parts.push_back(TWText::fill(
            EntriesInFiles, { TWText::count(entries, "entry", "entries"), TWText::count(files, "file", "files") }));
    if (const auto deleted = counts.of(TWPlannedAction::Delete); deleted > 0 || items == 0)
        parts.push_back(TWText::fill(ItemsAndSize, { TWText::count(deleted, "item", "items"), TWText::size(bytes) }));
    counts.forEachThing([&](const TWPlannedActionTexts& texts, std::uint64_t count) {
        parts.push_back(TWText::fill(CountToDo, { TWText::count(count, texts.one, texts.several), texts.toDo }));
    });
    return TWText::join(parts, "; ");
}

TWPlanSummarizer::TWPlanSummarizer(std::unique_ptr<TWCleaner> cleaner, TWRunLoop& runLoop,
    const TWFileSystem& fileSystem, std::function<void(const TWPlanSummary&)> made)
    : runLoop_(runLoop)
    , fileSystem_(fileSystem)
    , made_(std::move(made))
    , cleaner_(std::move(cleaner))
{
    planning_ = cleaner_->makePlan([](const TWPlan&) {}, [this](TWPlan plan) { measure(std::move(plan)); });
}

void TWPlanSummarizer::measure(TWPlan plan)
{
    auto shared = std::make_shared<const TWPlan>(std::move(plan));
    sizes_ = std::make_unique<TWPlanSizes>(
        runLoop_, fileSystem_, shared, TWPlanSizes::wouldBeDeleted(shared), [] {}, [this, shared] { addUp(shared); });
}

void TWPlanSummarizer::addUp(const std::shared_ptr<const TWPlan>& plan)
{
    addingUp_ = std::make_unique<TWBackgroundStream<TWPlanSummary>>(
        runLoop_, 1,
        [plan, bytes = sizes_->bytes()](auto& sink) { sink.put(summaryOf(plan, bytes, sink.cancellation())); },
        [this](const TWPlanSummary& summary) { made_(summary); }, [] {});
}
