#include "app/TWPreviewCounts.h"

namespace {

constexpr TWRunLoop::Duration BetweenCounts{ 200 };

using Groups = std::vector<TWCleanerPreview::Group>;

// Another thread.
std::vector<TWPreviewCount> countGroups(
    const TWPreviewShare& share, const Groups& groups, const TWCancellation& cancellation)
{
    std::vector<TWPreviewCount> counts;
    for (const auto& group : groups) {
        auto& count = counts.emplace_back();
        for (auto index = group.begin; index < group.end && !cancellation.cancelled(); ++index) {
            const auto& item = share.plan->items[index];
            if (item.quiet)
                continue;
            const bool refused = !share.plan->wouldDelete(item);
            ++count.items;
            count.refused += refused;
            if (refused || share.unticked[index] || item.isAbsent())
                continue;
            ++count.ticked;
            count.bytes += index < share.sized ? (*share.bytes)[index] : 0;
        }
    }
    return counts;
}

}

TWPreviewCount& TWPreviewCount::operator+=(const TWPreviewCount& other)
{
    items += other.items;
    refused += other.refused;
    ticked += other.ticked;
    bytes += other.bytes;
    return *this;
}

TWPreviewCounts::TWPreviewCounts(TWRunLoop& runLoop, const TWPreview& preview, std::function<void()> changed)
    : runLoop_(runLoop)
    , preview_(preview)
    , changed_(std::move(changed))
{
}

void TWPreviewCounts::renew()
{
    outdated_ = true;
    if (soon_ || counting_)
        return;
    const bool lately = !counts_.empty() && runLoop_.now() - counted_ < BetweenCounts;
    soon_ = runLoop_.after(lately ? BetweenCounts : TWRunLoop::Duration(0), [this] { count(); });
}

void TWPreviewCounts::count()
{
    soon_.reset();
    outdated_ = false;
    std::vector<Groups> groups;
    for (const auto& cleaner : preview_.cleaners())
        groups.push_back(cleaner->groups());
    counting_ = std::make_unique<TWBackgroundStream<Counts>>(
        runLoop_, 1,
        [shares = preview_.shares(), groups = std::move(groups)](auto& sink) {
            Counts counts(groups.size());
            for (const auto& share : shares)
                counts[share.cleaner].groups = countGroups(share, groups[share.cleaner], sink.cancellation());
            for (const auto& share : shares) {
                if (share.sized == share.plan->items.size())
                    counts[share.cleaner].total = TWAddUpPreview({ share }, sink.cancellation());
            }
            sink.put(std::move(counts));
        },
        [this](Counts counts) { counts_ = std::move(counts); },
        [this] {
            counting_.reset();
            counted_ = runLoop_.now();
            if (outdated_)
                renew();
            const auto call = changed_;
            call();
        });
}

TWPreviewCount TWPreviewCounts::of(std::size_t cleaner, std::size_t group) const
{
    const bool known = cleaner < counts_.size() && group < counts_[cleaner].groups.size();
    return known ? counts_[cleaner].groups[group] : TWPreviewCount();
}

TWPreviewCount TWPreviewCounts::of(std::size_t cleaner) const
{
    TWPreviewCount sum;
    for (std::size_t group = 0; cleaner < counts_.size() && group < counts_[cleaner].groups.size(); ++group)
        sum += counts_[cleaner].groups[group];
    return sum;
}

TWPreviewCount TWPreviewCounts::distinct(std::size_t cleaner) const
{
    auto count = of(cleaner);
    if (cleaner < counts_.size() && counts_[cleaner].total) {
        count.ticked = counts_[cleaner].total->items;
        count.bytes = counts_[cleaner].total->bytes;
    }
    return count;
}

TWPreviewCount TWPreviewCounts::all() const
{
    TWPreviewCount sum;
    for (std::size_t cleaner = 0; cleaner < counts_.size(); ++cleaner)
        sum += of(cleaner);
    return sum;
}
