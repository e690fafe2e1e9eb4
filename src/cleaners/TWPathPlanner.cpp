#include "cleaners/TWPathPlanner.h"

#include "platform/TWDanglingLink.h"
#include "platform/TWOnAllCores.h"
#include "support/TWPath.h"

#include <algorithm>
#include <cerrno>

namespace {

constexpr std::size_t EntriesTogether = 16384; // enough to be worth several threads

}

std::optional<TWPathPlanner::Folder> TWPathPlanner::folder(
    const std::string& path, const std::string& realPath, int& error) const
{
    auto held = fileSystem_.holdFolder(realPath, error);
    if (!held)
        return std::nullopt;
    Folder folder;
    folder.planned = std::make_shared<const TWPlannedFolder>(TWPlannedFolder{ path, realPath, held->identity() });
    folder.judged = rules_->judgeFolder(*held, realPath);
    folder.held = std::move(held);
    return folder;
}

std::optional<TWPathPlanner::Folder> TWPathPlanner::folderThroughLinks(const std::string& path, int& error) const
{
    const auto real = fileSystem_.realPath(path, TWLinkAtEnd::Follow, &error);
    return real ? folder(path, *real, error) : std::nullopt;
}

TWPathPlanner::Sought TWPathPlanner::seek(const std::string& path) const
{
    Sought sought;
    sought.name = TWPath::lastComponent(path);
    sought.isPath = path.starts_with('/') && !sought.name.empty();
    if (!sought.isPath)
        return sought;
    const std::string parent(TWPath::parent(path));
    sought.folder = folderThroughLinks(parent, sought.look.error);
    if (sought.folder) {
        sought.look = sought.folder->held->look(sought.name);
        return sought;
    }
    sought.isBehindDanglingLink = isMissing(sought.look.error) && TWIsBehindDanglingLink(fileSystem_, parent);
    if (isMissing(sought.look.error) && !sought.isBehindDanglingLink)
        sought.look.presence = TWPresence::Gone;
    return sought;
}

bool TWPathPlanner::isMissing(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

std::unique_ptr<TWOpenFolder> TWPathPlanner::list(
    const Folder& folder, int& error, const TWCancellation& cancellation) const
{
    auto open = fileSystem_.openFolder(folder.planned->realPath, error, &cancellation);
    if (!open || open->identity() == folder.planned->identity)
        return open;
    error = ESTALE;
    return nullptr;
}

bool TWPathPlanner::lookAtEntries(
    const Folder& folder, const TWOpenFolder& list, const TWCancellation& cancellation, const Seen& seen) const
{
    const auto& entries = list.entries();
    std::vector<TWFileLook> looks(std::min(entries.size(), EntriesTogether));
    for (std::size_t start = 0; start < entries.size(); start += EntriesTogether) {
        const auto count = std::min(EntriesTogether, entries.size() - start);
        TWOnAllCores(count, [&](std::size_t begin, std::size_t end) {
            for (auto index = begin; index < end && !cancellation.cancelled(); ++index)
                looks[index] = folder.held->look(std::string(entries[start + index].name));
        });
        if (cancellation.cancelled())
            return false;
        for (std::size_t index = 0; index < count; ++index) {
            // A keep list with slow patterns can take long for each entry.
            if (cancellation.cancelled())
                return false;
            seen(entries[start + index].name, looks[index]);
        }
    }
    return true;
}

TWPlannedItem& TWPathPlanner::addNoPath(TWPlan& plan, const std::string& path)
{
    auto& item = plan.addItem(path);
    plan.object(item, TWDeletionRules::objectionToPath(path));
    return item;
}

TWPlannedItem& TWPathPlanner::add(TWPlan& plan, const Folder& folder, std::string_view name, const TWFileLook& look,
    const TWCancellation& cancellation) const
{
    if (plan.folders.empty() || plan.folders.back() != folder.planned)
        plan.folders.push_back(folder.planned);
    auto& item = plan.addItem(name);
    item.facts = look.facts;
    item.folder = static_cast<std::uint32_t>(plan.folders.size() - 1);
    auto objection = rules_->objection(folder.judged, item.name, look);
    constexpr auto Names = TWDeletionRules::Search::Names;
    if (objection.empty() && rules_->mustLookInside(folder.judged, look, Names))
        objection = rules_->objectionInside(folder.judged, item.name, look, Names, cancellation);
    plan.object(item, objection);
    return item;
}
