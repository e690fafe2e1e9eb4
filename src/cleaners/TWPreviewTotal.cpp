#include "cleaners/TWPreviewTotal.h"

#include "platform/TWRunLoop.h"
#include "support/TWText.h"

#include <unordered_map>
#include <unordered_set>

namespace {

constexpr auto WouldBeDeleted = "%@, %@ would be deleted";
constexpr auto EntriesRemoved = "%@ would be removed from files that stay";
constexpr auto ThingsWould = "%@ %@";

bool canBeTicked(const TWPreviewShare& share, std::size_t item)
{
    return !share.plan->items[item].quiet && share.plan->wouldDelete(share.plan->items[item]);
}

bool wouldBeDeleted(const TWPreviewShare& share, std::size_t item)
{
    return !share.unticked[item] && canBeTicked(share, item);
}

// Calls the function with the path and each path above it, the innermost first, until it returns false.
template <typename Function>
void forEachPathUp(std::string_view path, Function function)
{
    for (auto end = path.size(); end != 0 && end != std::string::npos; end = path.rfind('/', end - 1)) {
        if (!function(path.substr(0, end)))
            return;
    }
}

// Finds what is planned twice. Only parent folders are looked up for each other, because there are usually few of them;
// items are remembered by name only where two entries of the plans are about the same parent folder.
class Overlaps final {
public:
    Overlaps(const std::vector<TWPreviewShare>& shares, const TWCancellation& cancellation)
    {
        for (const auto& share : shares)
            addFolders(*share.plan);
        for (const auto& share : shares)
            findCovers(share, cancellation);
    }

    // True if the item lies in a folder that would be deleted, or if an item with its path was asked about before.
    // What keeps its file is not the same as the deletion of the file.
    bool isRepeated(const TWPlan& plan, const TWPlannedItem& item, TWPreviewRow row)
    {
        if (item.folder == TWNone)
            return false;
        const auto& folder = *plan.folders[item.folder];
        enter(folder);
        if (cover_ || !repeated_ || item.keepsFile())
            return cover_ != nullptr;
        return !names_[folder.identity].emplace(item.name, row).second;
    }

    // The ticked item that deletes the item as well. Call this when isRepeated() has been asked about all ticked ones.
    const TWPreviewRow* deleter(const TWPlannedFolder& folder, std::string_view name)
    {
        enter(folder);
        if (cover_ || !repeated_)
            return cover_;
        const auto& names = names_[folder.identity];
        const auto found = names.find(name);
        return found == names.end() ? nullptr : &found->second;
    }

private:
    void enter(const TWPlannedFolder& folder)
    {
        if (&folder == latest_)
            return;
        latest_ = &folder;
        cover_ = findCover(folder);
        repeated_ = repeatedFolders_.contains(folder.identity);
    }

    void addFolders(const TWPlan& plan)
    {
        for (const auto& folder : plan.folders) {
            const auto [known, isNew] = folders_.try_emplace(folder->identity, folder.get());
            if (!isNew && known->second != folder.get())
                repeatedFolders_.insert(folder->identity);
            forEachPathUp(folder->realPath, [this](std::string_view path) { return parents_.insert(path).second; });
        }
    }

    void findCovers(const TWPreviewShare& share, const TWCancellation& cancellation)
    {
        const auto& items = share.plan->items;
        for (std::size_t index = 0; index < items.size() && !cancellation.cancelled(); ++index) {
            if (items[index].facts.kind != TWFileKind::Folder || !wouldBeDeleted(share, index))
                continue;
            const auto parent = parents_.find(share.plan->realPath(items[index]));
            if (parent != parents_.end())
                covers_.try_emplace(*parent, TWPreviewRow{ share.cleaner, static_cast<std::uint32_t>(index) });
        }
    }

    const TWPreviewRow* findCover(const TWPlannedFolder& folder) const
    {
        const TWPreviewRow* cover = nullptr;
        if (covers_.empty())
            return cover;
        forEachPathUp(folder.realPath, [&](std::string_view path) {
            const auto found = covers_.find(path);
            cover = found == covers_.end() ? nullptr : &found->second;
            return !cover;
        });
        return cover;
    }

    std::unordered_map<TWFileIdentity, const TWPlannedFolder*> folders_; // the first of each
    std::unordered_set<TWFileIdentity> repeatedFolders_;
    std::unordered_set<std::string_view> parents_; // the folders of all items, and all folders above them
    std::unordered_map<std::string_view, TWPreviewRow> covers_; // of these, the ones that would be deleted
    std::unordered_map<TWFileIdentity, std::unordered_map<std::string_view, TWPreviewRow>>
        names_; // met in repeated folders
    const TWPlannedFolder* latest_ = nullptr;
    const TWPreviewRow* cover_ = nullptr; // a folder around the latest one, or itself, that would be deleted
    bool repeated_ = false; // the latest folder is a repeated one
};

std::shared_ptr<const std::vector<TWPreviewOverlap>> findOverlaps(
    const std::vector<TWPreviewShare>& shares, Overlaps& overlaps, const TWCancellation& cancellation)
{
    std::vector<TWPreviewOverlap> found;
    for (const auto& share : shares) {
        const auto& items = share.plan->items;
        for (std::uint32_t index = 0; index < items.size() && !cancellation.cancelled(); ++index) {
            const auto& item = items[index];
            if (!share.unticked[index] || !canBeTicked(share, index))
                continue;
            const auto* by
                = item.folder == TWNone ? nullptr : overlaps.deleter(*share.plan->folders[item.folder], item.name);
            if (by)
                found.push_back({ { share.cleaner, index }, *by });
        }
    }
    return std::make_shared<const std::vector<TWPreviewOverlap>>(std::move(found));
}

}

std::string TWPreviewTotal::text() const
{
    std::vector<std::string> parts;
    const auto deleted = counts.of(TWPlannedAction::Delete);
    if (deleted > 0 || items == 0)
        parts.push_back(TWText::fill(WouldBeDeleted, { TWText::count(deleted, "item", "items"), TWText::size(bytes) }));
    if (entries > 0)
        parts.push_back(TWText::fill(EntriesRemoved, { TWText::count(entries, "entry", "entries") }));
    counts.forEachThing([&](const TWPlannedActionTexts& texts, std::uint64_t count) {
        parts.push_back(TWText::fill(ThingsWould, { TWText::count(count, texts.one, texts.several), texts.would }));
    });
    return TWText::join(parts, "; ");
}

TWPreviewTotal TWAddUpPreview(const std::vector<TWPreviewShare>& shares, const TWCancellation& cancellation)
{
    TWPreviewTotal total;
    Overlaps overlaps(shares, cancellation);
    std::unordered_set<TWFileIdentity> filesWithSeveralNames;
    for (const auto& share : shares) {
        const auto& items = share.plan->items;
        for (std::uint32_t index = 0; index < items.size() && !cancellation.cancelled(); ++index) {
            const auto& item = items[index];
            total.refused += !item.quiet && !share.plan->wouldDelete(item);
            if (!wouldBeDeleted(share, index) || overlaps.isRepeated(*share.plan, item, { share.cleaner, index }))
                continue;
            if (item.isAbsent())
                continue;
            ++total.items;
            ++total.counts.of(item.action);
            if (item.keepsFile()) {
                total.entries += share.plan->change(item).entries;
                continue;
            }
            const bool severalNames = item.facts.kind != TWFileKind::Folder && item.facts.links > 1;
            if (!severalNames || filesWithSeveralNames.insert(item.facts.identity).second)
                total.bytes += (*share.bytes)[index];
        }
    }
    total.overlaps = findOverlaps(shares, overlaps, cancellation);
    return total;
}

std::vector<bool> TWItemsThatCount(const TWPreviewShare& share, const TWCancellation& cancellation)
{
    const auto& plan = *share.plan;
    std::vector<bool> count(plan.items.size());
    Overlaps overlaps({ share }, cancellation);
    for (std::uint32_t index = 0; index < count.size() && !cancellation.cancelled(); ++index) {
        const auto& item = plan.items[index];
        count[index] = wouldBeDeleted(share, index) && !overlaps.isRepeated(plan, item, { share.cleaner, index });
    }
    return count;
}
