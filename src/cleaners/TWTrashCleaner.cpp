#include "cleaners/TWTrashCleaner.h"

#include "cleaners/TWPathPlanner.h"
#include "cleaners/TWPlanStream.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <cerrno>
#include <unordered_map>

namespace {

constexpr auto Started = "Emptying the Trash...";
constexpr auto Unreadable = "The Trash folder \"%@\" could not be read (%@).";
constexpr auto Success = "The Trash is now empty.";
constexpr auto Failure = "Some files could not be removed from the Trash!";

constexpr auto RecordsFolder = "/info";
constexpr std::string_view RecordEnding = ".trashinfo";

// File managers cache the sizes of trashed folders here, so it names what was in the Trash.
constexpr auto SizesFile = "directorysizes";

bool isRecord(std::string_view name)
{
    return name.ends_with(RecordEnding) && name.size() > RecordEnding.size();
}

std::string itemNameOf(std::string_view record)
{
    return std::string(record.substr(0, record.size() - RecordEnding.size()));
}

class TrashPlanner final {
public:
    TrashPlanner(const TWPathPlanner& planner, TWPlanStream::Sink& sink)
        : planner_(planner)
        , sink_(sink)
    {
    }

    void plan(const std::string& folder)
    {
        if (planItems(folder)) {
            planRecords(std::string(TWPath::parent(folder)) + RecordsFolder);
            planSizes(std::string(TWPath::parent(folder)));
        }
        sink_.put(std::move(part_));
    }

private:
    using Folder = TWPathPlanner::Folder;

    bool planItems(const std::string& path)
    {
        std::optional<Folder> folder;
        const auto open = openFolder(path, folder);
        const bool finished
            = !open || lookAtEntries(*folder, *open, [&](std::string_view name, const TWFileLook& look) {
                  planner_.add(part_, *folder, name, look, sink_.cancellation());
                  names_.emplace_back(name);
                  ++planned_;
                  putFullPart();
              });
        return finished && !part_.incomplete;
    }

    void planRecords(const std::string& path)
    {
        std::optional<Folder> folder;
        const auto open = openFolder(path, folder);
        if (!open || open->entries().empty())
            return;
        items_.reserve(names_.size());
        for (std::uint32_t number = 0; number < names_.size(); ++number)
            items_.emplace(names_[number], number);
        lookAtEntries(*folder, *open, [&](std::string_view name, const TWFileLook& look) {
            if (isRecord(name))
                planRecord(*folder, name, look);
        });
    }

    // A folder that does not exist counts as empty; one that cannot be read makes the plan incomplete. Does not follow
    // a symbolic link.
    std::unique_ptr<TWOpenFolder> openFolder(const std::string& path, std::optional<Folder>& folder)
    {
        int error = 0;
        const auto real = planner_.fileSystem().realPath(path, TWLinkAtEnd::DoNotFollow, &error);
        folder = real ? planner_.folder(path, *real, error) : std::nullopt;
        auto open = folder ? planner_.list(*folder, error, sink_.cancellation()) : nullptr;
        if (!open && error != ENOENT) {
            part_.addLine(TWReportLine::about(Unreadable, { path, TWErrorText(error) }));
            part_.incomplete = true;
        }
        return open;
    }

    void planRecord(const Folder& folder, std::string_view name, const TWFileLook& look)
    {
        const auto owner = items_.find(itemNameOf(name));
        auto& record = planner_.add(part_, folder, name, look, sink_.cancellation());
        record.quiet = true;
        ++planned_;
        if (owner != items_.end())
            record.owner = owner->second;
        putFullPart();
    }

    void planSizes(const std::string& trash)
    {
        int error = 0;
        const auto folder = planner_.folderThroughLinks(trash, error);
        if (!folder)
            return;
        if (const auto look = folder->held->look(SizesFile); look.isThere())
            planner_.add(part_, *folder, SizesFile, look, sink_.cancellation()).quiet = true;
    }

    bool lookAtEntries(const Folder& folder, const TWOpenFolder& list, const TWPathPlanner::Seen& seen) const
    {
        return planner_.lookAtEntries(folder, list, sink_.cancellation(), seen);
    }

    void putFullPart()
    {
        if (part_.size() >= TWPlanStream::PartSize)
            sink_.put(std::exchange(part_, TWPlan()));
    }

    const TWPathPlanner& planner_;
    TWPlanStream::Sink& sink_;
    TWPlan part_;
    std::uint32_t planned_ = 0; // items of all parts
    std::vector<std::string> names_; // of the items, by their numbers
    std::unordered_map<std::string_view, std::uint32_t> items_; // the reverse; made only if there are records
};

}

TWTrashCleaner::TWTrashCleaner(const TWCleanerContext& context)
    : TWDeletingCleaner(context.deletion, { Started, Success, Failure })
    , context_(context)
    , info_(tools().places.abbreviate(tools().places.trash + "/files"))
{
}

std::unique_ptr<TWRunLoopHandle> TWTrashCleaner::makePlan(PlanGrown grown, PlanMade made) const
{
    TWPlan beginning;
    beginning.secureMode = secureModeNow();
    beginning.authorization = context_.authorization();
    tools().guard.renew();
    const TWPathPlanner planner(tools().fileSystem, tools().guard.rules());
    auto work = [planner, folder = tools().places.standardize(info_)](
                    TWPlanStream::Sink& sink) { TrashPlanner(planner, sink).plan(folder); };
    return std::make_unique<TWPlanStream>(
        tools().runLoop, std::move(beginning), std::move(work), std::move(grown), std::move(made));
}

// A file manager writes the record before it moves the item into the Trash, so a record that had no item when it was
// planned may have one by now.
TWTrashCleaner::FollowerTest TWTrashCleaner::followerTest() const
{
    return [items = tools().places.standardize(info_), &fileSystem = tools().fileSystem](const std::string& name) {
        return !isRecord(name) || fileSystem.look(items + "/" + itemNameOf(name)).presence == TWPresence::Gone;
    };
}
