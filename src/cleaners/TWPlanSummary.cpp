#include "cleaners/TWPlanSummary.h"

#include "platform/TWTreeSizes.h"
#include "support/TWText.h"

namespace {

constexpr auto ItemsAndSize = "%@, %@";
constexpr auto SeveralReasons = "see Preview.";

TWPlanSummary summaryOf(const TWPlan& plan, const TWFileSystem& fileSystem, const TWCancellation& cancellation)
{
    TWPlanSummary summary;
    summary.failure = plan.failure;
    summary.incomplete = plan.incomplete;
    if (!plan.lines.empty())
        summary.remark = plan.lines.front().text;
    std::vector<std::string> folders;
    for (const auto& item : plan.items) {
        if (item.quiet)
            continue;
        if (item.objection) {
            if (summary.refused++ == 0)
                summary.objection = item.objection;
            else if (summary.objection != item.objection)
                summary.objection = SeveralReasons;
            continue;
        }
        ++summary.items;
        if (item.facts.kind == TWFileKind::Folder)
            folders.push_back(plan.realPath(item));
        else
            summary.bytes += item.facts.bytes;
    }
    summary.bytes += TWAddUpTrees(fileSystem, std::move(folders), cancellation).total().bytes;
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
            auto& sink) { sink.put(summaryOf(*shared, fileSystem, sink.cancellation())); },
        [this](const TWPlanSummary& summary) { made_(summary); }, [] {});
}
