#include "app/TWCleanerPreview.h"

#include "platform/TWTreeSizes.h"

#include <algorithm>

namespace {

constexpr std::size_t ItemsTogether = 10'000; // in one walk, so that its list of paths stays small
constexpr std::size_t SizesPerTurn = 4;

}

// Finds the sizes of all items, in order. Another thread.
class TWCleanerPreview::Measurement final {
public:
    Measurement(const TWPlan& plan, const TWFileSystem& fileSystem, TWBackgroundStream<Sizes>::Sink& sink)
        : plan_(plan)
        , fileSystem_(fileSystem)
        , sink_(sink)
    {
    }

    void measure()
    {
        findGroups();
        while (done_ < plan_.items.size() && !sink_.cancellation().cancelled())
            measureItems(std::min(done_ + ItemsTogether, plan_.items.size()));
    }

private:
    void findGroups()
    {
        for (std::size_t index = 0; index < plan_.items.size(); ++index) {
            if (sizes_.groups.empty() || sizes_.groups.back().rule != plan_.items[index].rule)
                sizes_.groups.push_back({ plan_.items[index].rule, index, index });
            sizes_.groups.back().end = index + 1;
        }
    }

    void measureItems(std::size_t end)
    {
        std::vector<std::string> paths;
        std::vector<std::size_t> folders;
        for (auto index = done_; index < end; ++index) {
            if (!needsWalk(plan_.items[index]))
                continue;
            paths.push_back(plan_.realPath(plan_.items[index]));
            folders.push_back(index);
        }
        const auto sized = [&](std::size_t first, std::span<const TWTreeSize> sizes) {
            for (const auto& size : sizes)
                addFolder(folders[first++], size);
            put();
        };
        const auto ended = TWAddUpTrees(fileSystem_, std::move(paths), sink_.cancellation(), TWAllCores, sized).end;
        if (ended == TWWalkEnd::Cancelled)
            return;
        sizes_.unknown += ended == TWWalkEnd::Failed;
        addItemsUntil(end);
        put();
    }

    // An item that would be left alone may be as large as the home folder, and nobody needs its size.
    bool needsWalk(const TWPlannedItem& item) const
    {
        return item.facts.kind == TWFileKind::Folder && plan_.wouldDelete(item);
    }

    void addItemsUntil(std::size_t end)
    {
        for (; done_ < end; ++done_)
            sizes_.bytes.push_back(plan_.wouldDelete(plan_.items[done_]) ? plan_.items[done_].facts.bytes : 0);
    }

    void addFolder(std::size_t index, const TWTreeSize& size)
    {
        addItemsUntil(index);
        sizes_.bytes.push_back(size.bytes);
        sizes_.unknown += size.unknown;
        ++done_;
    }

    void put() { sink_.put(std::exchange(sizes_, Sizes())); }

    const TWPlan& plan_;
    const TWFileSystem& fileSystem_;
    TWBackgroundStream<Sizes>::Sink& sink_;
    Sizes sizes_; // not put yet
    std::size_t done_ = 0; // items
};

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
            itemsFound_ = soFar.items.size();
            changed_();
        },
        [this](TWPlan plan) { measure(std::move(plan)); });
}

void TWCleanerPreview::stop()
{
    planning_.reset();
    measuring_.reset();
}

void TWCleanerPreview::measure(TWPlan plan)
{
    plan_ = std::make_shared<const TWPlan>(std::move(plan));
    itemsFound_ = plan_->items.size();
    unticked_.assign(itemsFound_, allUnticked_);
    bytes_->reserve(itemsFound_);
    measuring_ = std::make_unique<TWBackgroundStream<Sizes>>(
        context_.deletion.runLoop, SizesPerTurn,
        [plan = plan_, &fileSystem = context_.deletion.fileSystem](
            auto& sink) { Measurement(*plan, fileSystem, sink).measure(); },
        [this](const Sizes& sizes) { take(sizes); },
        [this] {
            isComplete_ = true;
            const auto call = ended_;
            call();
        });
    changed_();
}

void TWCleanerPreview::take(const Sizes& sizes)
{
    if (!sizes.groups.empty())
        groups_ = sizes.groups;
    bytes_->insert(bytes_->end(), sizes.bytes.begin(), sizes.bytes.end());
    unknown_ += sizes.unknown;
    changed_();
}

bool TWCleanerPreview::hasProblem() const
{
    if (!plan_ || plan_->failure || plan_->incomplete || unknown_ > 0)
        return true;
    return std::any_of(plan_->items.begin(), plan_->items.end(), [](const auto& item) { return item.objection; });
}

void TWCleanerPreview::setTicked(std::size_t item, TWTick tick)
{
    unticked_[item] = tick == TWTick::Off;
    allUnticked_ = false;
}

void TWCleanerPreview::setTicked(const Group& group, TWTick tick)
{
    const auto begin = unticked_.begin();
    std::fill(begin + static_cast<std::ptrdiff_t>(group.begin), begin + static_cast<std::ptrdiff_t>(group.end),
        tick == TWTick::Off);
    allUnticked_ = false;
}

void TWCleanerPreview::setAllTicked(TWTick tick)
{
    allUnticked_ = tick == TWTick::Off;
    unticked_.assign(unticked_.size(), allUnticked_);
}

TWPlannedJob TWCleanerPreview::job() const
{
    TWPlannedJob job;
    if (!isComplete_ || allUnticked_ || !takesPart())
        return job;
    job.plan = plan_;
    job.warning = warning_;
    if (std::find(unticked_.begin(), unticked_.end(), true) != unticked_.end())
        job.unticked = unticked_;
    return job;
}

// A cleaner that found nothing takes part, to say so; one of which every item was unticked does not.
bool TWCleanerPreview::takesPart() const
{
    bool empty = true;
    for (std::size_t index = 0; index < plan_->items.size(); ++index) {
        if (plan_->items[index].quiet)
            continue;
        if (isTicked(index))
            return true;
        empty = false;
    }
    return empty;
}
