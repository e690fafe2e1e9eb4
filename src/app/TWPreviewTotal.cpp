#include "app/TWPreviewTotal.h"

#include "platform/TWRunLoop.h"

#include <unordered_map>
#include <unordered_set>

namespace {

bool wouldBeDeleted(const TWPreviewShare& share, std::size_t item)
{
    return !share.plan->items[item].quiet && !share.unticked[item] && share.plan->wouldDelete(share.plan->items[item]);
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

    // True if the item lies in a folder that would be deleted, or was asked about before.
    bool isRepeated(const TWPlannedFolder& folder, std::string_view name)
    {
        if (&folder != latest_) {
            latest_ = &folder;
            covered_ = isCovered(folder);
            repeated_ = repeatedFolders_.contains(folder.identity);
        }
        if (covered_ || !repeated_)
            return covered_;
        return !names_[folder.identity].emplace(name).second;
    }

private:
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
                covers_.insert(*parent);
        }
    }

    bool isCovered(const TWPlannedFolder& folder) const
    {
        bool covered = false;
        if (!covers_.empty())
            forEachPathUp(folder.realPath, [&](std::string_view path) { return !(covered = covers_.contains(path)); });
        return covered;
    }

    std::unordered_map<TWFileIdentity, const TWPlannedFolder*> folders_; // the first of each
    std::unordered_set<TWFileIdentity> repeatedFolders_;
    std::unordered_set<std::string_view> parents_; // the folders of all items, and all folders above them
    std::unordered_set<std::string_view> covers_; // of these, the ones that would be deleted
    std::unordered_map<TWFileIdentity, std::unordered_set<std::string_view>> names_; // met in repeated folders
    const TWPlannedFolder* latest_ = nullptr;
    bool covered_ = false; // the latest folder lies in one that would be deleted
    bool repeated_ = false; // the latest folder is a repeated one
};

}

TWPreviewTotal TWAddUpPreview(const std::vector<TWPreviewShare>& shares, const TWCancellation& cancellation)
{
    TWPreviewTotal total;
    Overlaps overlaps(shares, cancellation);
    std::unordered_set<TWFileIdentity> filesWithSeveralNames;
    for (const auto& share : shares) {
        const auto& items = share.plan->items;
        for (std::size_t index = 0; index < items.size() && !cancellation.cancelled(); ++index) {
            const auto& item = items[index];
            total.refused += !item.quiet && !share.plan->wouldDelete(item);
            if (!wouldBeDeleted(share, index) || overlaps.isRepeated(*share.plan->folders[item.folder], item.name))
                continue;
            ++total.items;
            const bool severalNames = item.facts.kind != TWFileKind::Folder && item.facts.links > 1;
            if (!severalNames || filesWithSeveralNames.insert(item.facts.identity).second)
                total.bytes += (*share.bytes)[index];
        }
    }
    return total;
}
