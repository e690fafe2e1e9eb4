#include "cleaners/TWPlanSummary.h"

#include "cleaners/TWPreviewTotal.h"
#include "support/TWText.h"

namespace {

constexpr auto ItemsAndSize = "%@, %@";
constexpr auto SeveralReasons = "see Preview.";

TWPlanSummary summaryOf(const std::shared_ptr<const TWPlan>& plan,
    const std::shared_ptr<const std::vector<std::uint64_t>>& bytes, const TWCancellation& cancellation)
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
    const std::vector<bool> unticked(plan->items.size());
    const auto total = TWAddUpPreview({ { plan, bytes, unticked, plan->items.size(), 0 } }, cancellation);
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
