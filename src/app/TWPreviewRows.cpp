#include "app/TWPreviewRows.h"

#include "support/TWKeywordMatcher.h"
#include "support/TWPath.h"

#include <algorithm>

namespace {

constexpr std::size_t RowsBetweenLooks = 4096; // at the cancellation
constexpr std::uint64_t SignBit = std::uint64_t(1) << 63;

// A row with what it is sorted by. Comparing the keys decides most comparisons without a look at the plan.
struct Keyed {
    std::uint64_t key;
    TWPreviewRow row;
};

// The folder of the item, as the path of the item begins.
std::string_view folderOf(const TWPlan& plan, const TWPlannedItem& item)
{
    if (item.folder == TWNone)
        return {};
    const std::string_view path = plan.folders[item.folder]->path;
    return path == "/" ? std::string_view() : path;
}

void copyPath(const TWPlan& plan, const TWPlannedItem& item, std::string& path)
{
    path.clear();
    if (item.folder != TWNone)
        path.append(folderOf(plan, item)).push_back('/');
    path.append(item.name);
}

// Finds the rows on another thread.
class Search final {
public:
    Search(const TWPreviewSource& source, const TWPreviewWish& wish, const TWCancellation& cancellation)
        : source_(source)
        , wish_(wish)
        , cancellation_(cancellation)
        , matcher_({ wish.text })
    {
    }

    std::vector<TWPreviewRow> rows()
    {
        for (const auto& share : source_.shares) {
            if (!wish_.cleaner || *wish_.cleaner == share.cleaner)
                addRows(share);
        }
        if (wish_.order != TWPreviewOrder::Plan)
            sort();
        else if (wish_.direction == TWPreviewDirection::Descending)
            std::ranges::reverse(rows_);
        return std::move(rows_);
    }

private:
    void addRows(const TWPreviewShare& share)
    {
        const auto end = std::min(wish_.end, share.plan->items.size());
        for (std::size_t index = wish_.begin; index < end && !cancellation_.cancelled(); ++index) {
            const TWPreviewRow row{ share.cleaner, static_cast<std::uint32_t>(index) };
            if (!share.plan->items[index].quiet && isShown(row) && isWished(*share.plan, index))
                rows_.push_back(row);
        }
    }

    bool isShown(TWPreviewRow row) const
    {
        if (wish_.shown == TWPreviewShown::All)
            return true;
        const auto fate = source_.fate(row);
        const bool goes = fate == TWPreviewFate::Deleted || fate == TWPreviewFate::DeletedAnyway;
        return goes == (wish_.shown == TWPreviewShown::WouldBeDeleted);
    }

    bool isWished(const TWPlan& plan, std::size_t index)
    {
        if (!wish_.text.empty()) {
            copyPath(plan, plan.items[index], path_);
            if (!matcher_.matches(path_))
                return false;
        }
        if (wish_.about.empty())
            return true;
        path_ = plan.realPath(plan.items[index]);
        return std::ranges::any_of(wish_.about, [this](const auto& about) {
            return TWPath::isAtOrBelow(path_, about) || TWPath::isAtOrBelow(about, path_);
        });
    }

    void sort()
    {
        std::vector<Keyed> keyed;
        keyed.reserve(rows_.size());
        const auto common = wish_.order == TWPreviewOrder::Path ? commonLength() : 0;
        for (const auto& row : rows_) {
            if (cancellation_.cancelled())
                return;
            keyed.push_back({ key(row, common), row });
        }
        if (wish_.direction == TWPreviewDirection::Ascending)
            sort(keyed, [this](const Keyed& a, const Keyed& b) { return isLess(a, b); });
        else
            sort(keyed, [this](const Keyed& a, const Keyed& b) { return isLess(b, a); });
        std::ranges::transform(keyed, rows_.begin(), &Keyed::row);
    }

    // How many bytes all paths have in common at their beginning.
    std::size_t commonLength()
    {
        std::string first;
        std::size_t common = std::string::npos;
        for (const auto& row : rows_) {
            if (cancellation_.cancelled())
                break;
            const auto& plan = *source_.share(row).plan;
            copyPath(plan, plan.items[row.item], path_);
            if (first.empty())
                first = path_;
            const auto length = std::min({ common, first.size(), path_.size() });
            common = static_cast<std::size_t>(
                std::mismatch(path_.begin(), path_.begin() + static_cast<std::ptrdiff_t>(length), first.begin()).first
                - path_.begin());
        }
        return common;
    }

    std::uint64_t key(TWPreviewRow row, std::size_t common)
    {
        const auto& share = source_.share(row);
        const auto& item = share.plan->items[row.item];
        if (wish_.order == TWPreviewOrder::Size)
            return row.item < share.sized ? (*share.bytes)[row.item] : 0;
        if (wish_.order == TWPreviewOrder::Age)
            return ~(static_cast<std::uint64_t>(item.facts.modified) ^ SignBit); // the youngest first
        copyPath(*share.plan, item, path_);
        std::uint64_t key = 0;
        for (std::size_t byte = common; byte < common + sizeof key; ++byte)
            key = key << 8 | (byte < path_.size() ? static_cast<std::uint8_t>(path_[byte]) : 0);
        return key;
    }

    bool isLess(const Keyed& a, const Keyed& b) const
    {
        if (a.key != b.key || wish_.order != TWPreviewOrder::Path)
            return a.key < b.key;
        const auto& planA = *source_.share(a.row).plan;
        const auto& planB = *source_.share(b.row).plan;
        const auto& itemA = planA.items[a.row.item];
        const auto& itemB = planB.items[b.row.item];
        if (&planA == &planB && itemA.folder == itemB.folder)
            return itemA.name < itemB.name;
        std::string pathA;
        std::string pathB;
        copyPath(planA, itemA, pathA);
        copyPath(planB, itemB, pathB);
        return pathA < pathB;
    }

    // A merge sort that can be cancelled and keeps the order of rows that are alike.
    template <typename Less>
    void sort(std::vector<Keyed>& rows, const Less& less) const
    {
        const auto at = [&](std::size_t index) {
            return rows.begin() + static_cast<std::ptrdiff_t>(std::min(index, rows.size()));
        };
        for (std::size_t begin = 0; begin < rows.size() && !cancellation_.cancelled(); begin += RowsBetweenLooks)
            std::stable_sort(at(begin), at(begin + RowsBetweenLooks), less);
        std::vector<Keyed> merged(rows.size());
        for (auto length = RowsBetweenLooks; length < rows.size() && !cancellation_.cancelled(); length *= 2) {
            auto to = merged.begin();
            for (std::size_t begin = 0; begin < rows.size(); begin += 2 * length)
                to = merge(at(begin), at(begin + length), at(begin + 2 * length), to, less);
            rows.swap(merged);
        }
    }

    template <typename Less>
    std::vector<Keyed>::iterator merge(std::vector<Keyed>::iterator left, std::vector<Keyed>::iterator middle,
        std::vector<Keyed>::iterator end, std::vector<Keyed>::iterator to, const Less& less) const
    {
        auto right = middle;
        while (left != middle && right != end && !cancellation_.cancelled())
            *to++ = less(*right, *left) ? *right++ : *left++;
        return std::copy(right, end, std::copy(left, middle, to));
    }

    const TWPreviewSource& source_;
    const TWPreviewWish& wish_;
    const TWCancellation& cancellation_;
    const TWKeywordMatcher matcher_;
    std::vector<TWPreviewRow> rows_;
    std::string path_; // used again for each row
};

}

std::vector<TWPreviewRow> TWFindPreviewRows(
    const TWPreviewSource& source, const TWPreviewWish& wish, const TWCancellation& cancellation)
{
    return Search(source, wish, cancellation).rows();
}

void TWPreviewRows::find(TWPreviewSource source, const TWPreviewWish& wish)
{
    finding_ = std::make_unique<TWBackgroundStream<std::vector<TWPreviewRow>>>(
        runLoop_, 1,
        [source = std::move(source), wish](
            auto& sink) { sink.put(TWFindPreviewRows(source, wish, sink.cancellation())); },
        [this](std::vector<TWPreviewRow> rows) { found_ = std::move(rows); },
        [this] {
            rows_ = std::move(found_);
            finding_.reset();
            const auto call = changed_;
            call();
        });
}

void TWPreviewRows::clear()
{
    finding_.reset();
    rows_.clear();
}

std::size_t TWPreviewRows::position(TWPreviewRow row) const
{
    return static_cast<std::size_t>(std::ranges::find(rows_, row) - rows_.begin());
}
