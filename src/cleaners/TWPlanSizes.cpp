#include "cleaners/TWPlanSizes.h"

#include <algorithm>

namespace {

constexpr std::size_t ItemsTogether = 10'000; // in one walk, so that its list of paths stays small
constexpr std::size_t SizesPerTurn = 4;

}

// Of the next items.
struct TWPlanSizes::Sizes {
    std::vector<bool> counted; // of all items; only the first ones have it
    std::vector<std::uint64_t> bytes;
    std::vector<Folder> folders;
    std::uint64_t unreadable = 0;
    std::uint64_t vanished = 0; // folders
};

// Finds the sizes of all items, in order. Another thread.
class TWPlanSizes::Measurement final {
public:
    Measurement(
        const TWPlan& plan, const Counts& counts, const TWFileSystem& fileSystem, TWBackgroundStream<Sizes>::Sink& sink)
        : plan_(plan)
        , counts_(counts(sink.cancellation()))
        , fileSystem_(fileSystem)
        , sink_(sink)
    {
    }

    void measure()
    {
        sizes_.counted = counts_;
        while (done_ < plan_.items.size() && !sink_.cancellation().cancelled())
            measureItems(std::min(done_ + ItemsTogether, plan_.items.size()));
    }

private:
    void measureItems(std::size_t end)
    {
        std::vector<std::string> paths;
        std::vector<std::size_t> folders;
        for (auto index = done_; index < end; ++index) {
            if (plan_.items[index].facts.kind != TWFileKind::Folder || !counts_[index])
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
        sizes_.unreadable += ended == TWWalkEnd::Failed;
        addItemsUntil(end);
        put();
    }

    void addItemsUntil(std::size_t end)
    {
        for (; done_ < end; ++done_)
            sizes_.bytes.push_back(counts_[done_] ? bytes(plan_.items[done_]) : 0);
    }

    static std::uint64_t bytes(const TWPlannedItem& item) { return item.keepsFile() ? 0 : item.facts.bytes; }

    void addFolder(std::size_t index, const TWTreeSize& size)
    {
        addItemsUntil(index);
        sizes_.bytes.push_back(size.bytes);
        sizes_.folders.push_back({ index, size.shared, size.print });
        sizes_.unreadable += size.unknown;
        sizes_.vanished += size.items == 0;
        ++done_;
    }

    void put() { sink_.put(std::exchange(sizes_, Sizes())); }

    const TWPlan& plan_;
    const std::vector<bool> counts_; // by item
    const TWFileSystem& fileSystem_;
    TWBackgroundStream<Sizes>::Sink& sink_;
    Sizes sizes_; // not put yet
    std::size_t done_ = 0; // items
};

TWPlanSizes::Counts TWPlanSizes::wouldBeDeleted(std::shared_ptr<const TWPlan> plan)
{
    return [plan = std::move(plan)](const TWCancellation&) {
        std::vector<bool> counts;
        for (const auto& item : plan->items)
            counts.push_back(plan->wouldDelete(item));
        return counts;
    };
}

TWPlanSizes::TWPlanSizes(TWRunLoop& runLoop, const TWFileSystem& fileSystem, const std::shared_ptr<const TWPlan>& plan,
    Counts counts, std::function<void()> grown, std::function<void()> ended)
{
    bytes_->reserve(plan->items.size());
    measuring_ = std::make_unique<TWBackgroundStream<Sizes>>(
        runLoop, SizesPerTurn,
        [plan, counts = std::move(counts), &fileSystem](
            auto& sink) { Measurement(*plan, counts, fileSystem, sink).measure(); },
        [this, grown = std::move(grown)](Sizes sizes) {
            take(std::move(sizes));
            const auto call = grown; // which may destroy this
            call();
        },
        [this, ended = std::move(ended)] {
            ended_ = true;
            const auto call = ended;
            call();
        });
}

void TWPlanSizes::take(Sizes sizes)
{
    if (counted_.empty())
        counted_ = std::move(sizes.counted);
    folders_.insert(folders_.end(), sizes.folders.begin(), sizes.folders.end());
    bytes_->insert(bytes_->end(), sizes.bytes.begin(), sizes.bytes.end());
    for (const auto bytes : sizes.bytes)
        total_ += bytes;
    unreadable_ += sizes.unreadable;
    vanished_ += sizes.vanished;
}
