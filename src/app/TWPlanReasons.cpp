#include "app/TWPlanReasons.h"

#include "support/TWText.h"

namespace {

constexpr auto OwnerRefused = "the item that it belongs to would be refused.";
constexpr auto CleanerFails = "the cleaner would stop before: %@";

std::string textAt(const std::vector<std::string>& texts, std::uint32_t index)
{
    return index < texts.size() ? texts[index] : "";
}

}

std::string TWPlanReasons::rule(const TWPlannedItem& item) const
{
    return item.rule == TWNone ? other : textAt(rules, item.rule);
}

std::string TWPlanReasons::ruleName(const TWPlannedItem& item) const
{
    return item.rule == TWNone ? other : textAt(names, item.rule);
}

std::string TWPlanReasons::word(const TWPlannedItem& item) const
{
    return textAt(words, item.word);
}

std::string TWPlanReasons::which(const TWPlan& plan, const TWPlannedItem& item)
{
    const auto& thing = *plan.thing(item);
    return thing.which.empty() ? thing.path : thing.which;
}

std::string TWPlanReasons::refusal(const TWPlan& plan, const TWPlannedItem& item)
{
    if (item.objection)
        return item.objection;
    if (plan.failure)
        return TWText::fill(CleanerFails, { *plan.failure });
    return plan.wouldDelete(item) ? "" : OwnerRefused;
}
