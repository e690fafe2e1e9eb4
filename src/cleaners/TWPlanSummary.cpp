#include "cleaners/TWPlanSummary.h"

#include "cleaners/TWPreviewTotal.h"
#include "platform/TWTreeSizes.h"
#include "support/TWText.h"

namespace {

constexpr auto ItemsAndSize = "%@, %@";
constexpr auto SeveralReasons = "see Preview.";

// By item. Only folders have to be looked into.
std::vector<std::uint64_t> bytesOf(
    const TWPlan& plan, const TWFileSystem& fileSystem, const TWCancellation& cancellation)
{
    std::vector<std::uint64_t> bytes;
    std::vector<std::string> paths;
    std::vector<std::size_t> folders;
    for (const auto& item : plan.items) {
        bytes.push_back(item.facts.bytes);
        if (item.facts.kind != TWFileKind::Folder || !plan.wouldDelete(item))
            continue;
        paths.push_back(plan.realPath(item));
        folders.push_back(bytes.size() - 1);
    }
    const auto sizes = TWAddUpTrees(fileSystem, std::move(paths), cancellation).sizes;
    for (std::size_t index = 0; index < folders.size(); ++index)
        bytes[folders[index]] = sizes[index].bytes;
    return bytes;
}

TWPlanSummary summaryOf(
    const std::shared_ptr<const TWPlan>& plan, const TWFileSystem& fileSystem, const TWCancellation& cancellation)
{
    TWPlanSummary summary;
    summary.failure = plan->failure;
    summary.incomplete = plan->incomplete;
    if (!plan->lines.empty())
        summary.remark = plan->lines.front().text;
    for (const auto& item : plan->items) {
        if (item.quiet || !item.objection)
            continue;
        if (summary.refused++ == 0)
            summary.objection = item.objection;
        else if (summary.objection != item.objection)
            summary.objection = SeveralReasons;
    }
    auto bytes = std::make_shared<const std::vector<std::uint64_t>>(bytesOf(*plan, fileSystem, cancellation));
    const std::vector<bool> unticked(plan->items.size());
    const auto total = TWAddUpPreview({ { plan, std::move(bytes), unticked, plan->items.size(), 0 } }, cancellation);
    summary.items = total.items;
    summary.bytes = total.bytes;
    return summary;
}

}

std::string TWPlanSummary::itemsAndSize() const
{
    return TWText::fill(ItemsAndSize, { TWText::count(items, "item", "items"), TWText::size(bytes) });
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
    const auto shared = std::make_shared<const TWPlan>(std::move(plan));
    measuring_ = std::make_unique<TWBackgroundStream<TWPlanSummary>>(
        runLoop_, 1,
        [shared, &fileSystem = fileSystem_](
            auto& sink) { sink.put(summaryOf(shared, fileSystem, sink.cancellation())); },
        [this](const TWPlanSummary& summary) { made_(summary); }, [] {});
}
