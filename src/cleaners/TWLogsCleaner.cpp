#include "cleaners/TWLogsCleaner.h"

#include "cleaners/TWLogRoots.h"
#include "cleaners/TWPathPlanner.h"
#include "cleaners/TWPlanStream.h"
#include "platform/TWDanglingLink.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <cerrno>
#include <unordered_map>

namespace {

constexpr auto NothingChecked
    = "The Logs cleaner is checked but there are no checked logs. You should either disable the cleaner or check the "
      "boxes beside the logs you want to clean.";

constexpr auto Started = "Cleaning logs...";
constexpr auto Unreadable = "The folder %@ could not be read (%@).";
constexpr auto AlreadyDeleted = "Item %@ already deleted";
constexpr auto Refused = "Refused to delete \"%@\": %@";
constexpr auto NotLookedAt = "Whether \"%@\" exists could not be found out (%@).";
constexpr auto HeldByOne = "\"%@\" is still open in %@. Its space (%@) is freed when that program ends.";
constexpr auto HeldBySeveral = "\"%@\" is still open in %@. Its space (%@) is freed when those programs end.";
constexpr auto Success = "Logs have been cleaned.";
constexpr auto Failure = "Some logs could not be cleaned!";

class LogsPlanner final {
public:
    LogsPlanner(const TWPathPlanner& planner, const TWLogRoots& roots, TWPlanStream::Sink& sink)
        : planner_(planner)
        , roots_(roots)
        , sink_(sink)
    {
    }

    void plan(const std::vector<std::string>& itemPaths)
    {
        for (const auto& itemPath : itemPaths) {
            if (sink_.cancellation().cancelled())
                break;
            if (itemPath == TWAllUserLogs)
                planSources();
            else if (itemPath == TWAllSystemLogs)
                planContents(roots_.systemLogs(), nullptr);
            else
                planLog(itemPath);
            putFullPart();
        }
        sink_.put(std::move(part_));
    }

private:
    void planSources()
    {
        for (const auto& source : roots_.sources()) {
            if (source.isFolder)
                planContents(source.path, &source.identity);
            else
                planLog(source.path);
        }
    }

    // A folder that does not exist counts as empty. One that is not the same any more is not read.
    void planContents(const std::string& path, const TWFileIdentity* expected)
    {
        int error = 0;
        auto folder = planner_.folderThroughLinks(path, error);
        if (folder && expected && folder->planned->identity != *expected) {
            error = ESTALE;
            folder.reset();
        }
        const auto open = folder ? planner_.list(*folder, error, sink_.cancellation()) : nullptr;
        if (!open) {
            if (!isGone(path))
                fail(TWReportLine::about(Unreadable, { path, TWErrorText(error) }));
            return;
        }
        planner_.lookAtEntries(
            *folder, *open, sink_.cancellation(), [&](std::string_view name, const TWFileLook& look) {
                planner_.add(part_, *folder, name, look, sink_.cancellation());
                putFullPart();
            });
    }

    void planLog(const std::string& itemPath)
    {
        int error = 0;
        const auto place = roots_.find(planner_.fileSystem(), itemPath, error);
        const auto folder = !place.objection && error == 0
            ? planner_.folder(std::string(TWPath::parent(place.path)), place.realFolder, error)
            : std::nullopt;
        const auto look = folder ? folder->held->look(place.name) : TWFileLook{};
        // One that has vanished is handed to the queue as well.
        if (folder)
            planner_.add(part_, *folder, place.name, look, sink_.cancellation());
        else if (isGone(place.path))
            part_.addLine(TWReportLine::about(AlreadyDeleted, { place.path }));
        else if (place.objection)
            fail(TWReportLine::about(Refused, { place.path, place.objection }));
        else if (TWPathPlanner::isMissing(error) || error == ELOOP)
            fail(TWReportLine::about(Refused, { place.path, TWLogPlace::BehindLink }));
        else
            fail(TWReportLine::about(NotLookedAt, { place.path, TWErrorText(error) }));
    }

    bool isGone(const std::string& path) const
    {
        return path.starts_with('/') && planner_.fileSystem().look(path).presence == TWPresence::Gone
            && !TWIsBehindDanglingLink(planner_.fileSystem(), path);
    }

    void fail(TWReportLine line)
    {
        part_.addLine(std::move(line));
        part_.incomplete = true;
    }

    void putFullPart()
    {
        if (part_.size() >= TWPlanStream::PartSize)
            sink_.put(std::exchange(part_, TWPlan()));
    }

    const TWPathPlanner& planner_;
    const TWLogRoots& roots_;
    TWPlanStream::Sink& sink_;
    TWPlan part_; // not put yet
};

std::string programs(const TWDeletedFile& file)
{
    std::string names;
    for (const auto& program : file.programs)
        names += (names.empty() ? "" : ", ") + program;
    return names;
}

// A token counts only for a root. Deeper in a hand-made list it is a path in no log folder.
void collectActive(const std::vector<TWLogsRecord>& records, bool areRoots, std::vector<std::string>& paths)
{
    for (const auto& record : records) {
        const bool isToken = record.itemPath == TWAllUserLogs || record.itemPath == TWAllSystemLogs;
        if (record.active == TWLogChecked)
            paths.push_back(isToken && !areRoots ? "./" + record.itemPath : record.itemPath);
        if (record.children)
            collectActive(*record.children, false, paths);
    }
}

}

TWLogsCleaner::TWLogsCleaner(const TWCleanerContext& context)
    : TWDeletingCleaner(context.deletion, { Started, Success, Failure })
    , context_(context)
{
}

// Kept on purpose: a node that is mixed or unchecked is passed over, but not what is below it.
std::vector<std::string> TWLogsCleaner::activeItemsInArray(const std::vector<TWLogsRecord>& records)
{
    std::vector<std::string> paths;
    collectActive(records, true, paths);
    return paths;
}

std::vector<std::string> TWLogsCleaner::checkedPaths() const
{
    return info_.logsRoot ? activeItemsInArray(*info_.logsRoot) : std::vector<std::string>();
}

std::string TWLogsCleaner::validate()
{
    return isActive() && checkedPaths().empty() ? NothingChecked : "";
}

std::unique_ptr<TWRunLoopHandle> TWLogsCleaner::makePlan(PlanGrown grown, PlanMade made) const
{
    TWPlan beginning;
    beginning.secureMode = secureModeNow();
    beginning.authorization = context_.authorization();
    beginning.addProblems({ info_.problem });
    tools().guard.renew();
    auto work = [planner = TWPathPlanner(tools().fileSystem, tools().guard.rules()), places = tools().places,
                    &sources = context_.logs.sources, paths = checkedPaths()](TWPlanStream::Sink& sink) {
        const TWLogRoots roots(places, sources.userSources(places));
        LogsPlanner(planner, roots, sink).plan(paths);
    };
    return std::make_unique<TWPlanStream>(
        tools().runLoop, std::move(beginning), std::move(work), std::move(grown), std::move(made));
}

// Space that a program still holds is not free, though the file is gone. What a program has held since before the job
// cannot be told from that inside a deleted folder, so its space counts only for single files.
TWLogsCleaner::Remarks TWLogsCleaner::remarks() const
{
    return [&openFiles = context_.logs.openFiles](
               const TWPlan& plan, const std::vector<std::size_t>& deleted, const TWCancellation& cancellation) {
        std::unordered_map<std::string, const TWPlannedItem*> items;
        for (const auto item : deleted)
            items.emplace(plan.realPath(plan.items[item]), &plan.items[item]);
        Remark remark;
        for (const auto& file : openFiles.deletedFiles(cancellation)) {
            auto item = items.find(file.path);
            const bool isItem = item != items.end();
            for (auto above = file.path; item == items.end() && above.size() > 1; item = items.find(above))
                above = TWPath::parent(above);
            const bool isOther = isItem && item->second->facts.identity != file.identity;
            if (item == items.end() || isOther || (!isItem && item->second->facts.kind != TWFileKind::Folder))
                continue;
            remark.lines.push_back(TWReportLine::about(file.programs.size() > 1 ? HeldBySeveral : HeldByOne,
                { file.path, programs(file), TWText::size(file.bytes) }));
            remark.bytes += isItem ? file.bytes : 0;
        }
        return remark;
    };
}
