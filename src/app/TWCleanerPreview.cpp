#include "app/TWCleanerPreview.h"

#include <algorithm>

// Everything that depends on the lists is copied in one turn, so that the texts always fit the plan.
void TWCleanerPreview::start(
    const TWSettingsSources& sources, std::function<void()> changed, std::function<void()> ended)
{
    changed_ = std::move(changed);
    ended_ = std::move(ended);
    cleaner_ = row().make(context_);
    row().giveInfo(*cleaner_, sources);
    warning_ = cleaner_->validate();
    reasons_ = row().reasons(sources);
    planning_ = cleaner_->makePlan(
        [this](const TWPlan& soFar) {
            findGroups(soFar);
            if (!plan_ && !soFar.items.empty())
                showFirstItems(soFar);
            changed_();
        },
        [this](TWPlan plan) { measure(std::move(plan)); });
}

void TWCleanerPreview::stop()
{
    planning_.reset();
    if (sizes_)
        sizes_->stop();
}

// Several turns share the work on a large plan.
void TWCleanerPreview::findGroups(const TWPlan& plan)
{
    for (; itemsFound_ < plan.items.size(); ++itemsFound_) {
        const auto rule = plan.items[itemsFound_].rule;
        if (foundGroups_.empty() || foundGroups_.back().rule != rule)
            foundGroups_.push_back({ rule, itemsFound_, itemsFound_ });
        foundGroups_.back().end = itemsFound_ + 1;
    }
}

// The first part of a plan is small, and comes long before the last one of a large plan.
void TWCleanerPreview::showFirstItems(const TWPlan& soFar)
{
    plan_ = std::make_shared<const TWPlan>(soFar.copy());
    groups_ = foundGroups_;
    unticked_.assign(plan_->items.size(), allUnticked_);
}

// An item that would be left alone may be as large as the home folder, and nobody needs its size.
void TWCleanerPreview::measure(TWPlan plan)
{
    plan_ = std::make_shared<const TWPlan>(std::move(plan));
    findGroups(*plan_);
    groups_ = std::exchange(foundGroups_, {});
    isPlanned_ = true;
    unticked_.resize(itemsFound_, allUnticked_);
    sizes_ = std::make_unique<TWPlanSizes>(context_.deletion.runLoop, context_.deletion.fileSystem, plan_,
        TWPlanSizes::wouldBeDeleted(plan_), changed_, [this] {
            isComplete_ = true;
            const auto call = ended_;
            call();
        });
    bytes_ = sizes_->bytes();
    changed_();
}

bool TWCleanerPreview::hasProblem() const
{
    if (!isPlanned_ || plan_->failure || plan_->incomplete || unknown() > 0)
        return true;
    return std::any_of(plan_->items.begin(), plan_->items.end(), [](const auto& item) { return item.objection; });
}

void TWCleanerPreview::setTicked(std::size_t item, TWTick tick)
{
    unticked_[item] = tick == TWTick::Off;
    takesPart_.reset();
}

void TWCleanerPreview::setTicked(const Group& group, TWTick tick)
{
    if (!isPlanned_)
        return;
    const auto begin = unticked_.begin();
    std::fill(begin + static_cast<std::ptrdiff_t>(group.begin), begin + static_cast<std::ptrdiff_t>(group.end),
        tick == TWTick::Off);
    takesPart_.reset();
}

void TWCleanerPreview::setAllTicked(TWTick tick)
{
    allUnticked_ = tick == TWTick::Off;
    unticked_.assign(unticked_.size(), allUnticked_);
    takesPart_.reset();
}

// What the preview showed as refused stays out, even if it would not be refused any more.
TWPlannedJob TWCleanerPreview::job() const
{
    TWPlannedJob job;
    job.plan = plan_;
    job.warning = warning_;
    job.unticked = unticked_;
    for (std::size_t index = 0; index < plan_->items.size(); ++index) {
        if (plan_->wouldDelete(plan_->items[index]))
            continue;
        job.unticked[index] = true;
        job.refused += !plan_->items[index].quiet;
    }
    return job;
}

void TWCleanerPreview::expectFolders(TWPreviewCheck& check) const
{
    for (const auto& folder : sizes_->folders()) {
        if (isTicked(folder.item))
            check.expectFolder(plan_->realPath(plan_->items[folder.item]), folder.print);
    }
}

bool TWCleanerPreview::takesPart() const
{
    if (isComplete_ && !takesPart_)
        takesPart_ = findWhetherItTakesPart();
    return takesPart_.value_or(false);
}

bool TWCleanerPreview::findWhetherItTakesPart() const
{
    bool deletes = false;
    bool empty = true;
    for (std::size_t index = 0; index < plan_->items.size(); ++index) {
        if (plan_->items[index].quiet)
            continue;
        const bool wouldDelete = plan_->wouldDelete(plan_->items[index]);
        if (wouldDelete && isTicked(index))
            return true;
        deletes = deletes || wouldDelete;
        empty = false;
    }
    return !deletes && !allUnticked_ && (empty || plan_->failure || plan_->incomplete);
}
