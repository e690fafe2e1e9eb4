#pragma once

#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWPathPlanner.h"
#include "cleaners/TWPlanStream.h"
#include "cleaners/TWRecentItemsRule.h"
#include "platform/TWPlaces.h"

#include <map>
#include <set>

// Turns Recent Items rules into a plan: finds which of their files exist now and how many entries each key has there.
// Makes one plan. Any thread.
class TWRecentItemsPlanner final {
public:
    // The arguments must outlive the planner. Rule numbers in the plan are indexes into the list of rules.
    TWRecentItemsPlanner(const TWPathPlanner&, const TWPlaces&, const TWOtherPrograms&,
        const std::vector<TWRecentItemsRule>& rules, TWPlanStream::Sink&);

    // Skips inactive rules. Stops early when cancelled.
    void plan();

private:
    using Effect = TWPlannedLine::Effect;

    void planRule(const TWRecentItemsRule&);

    // The paths that a rule names, as messages show them: the one in the rule or, if there is no such path and one
    // folder in it is "*", those of all folders in its place, sorted. On failure sets error to the errno.
    std::vector<std::string> pathsOf(const std::string& filePath, int& error) const;

    void planPath(const TWRecentItemsRule&, const std::string& path);
    void planFile(const std::string& path);
    void planKeys(const TWRecentItemsRule&, const std::string& path);
    void addKeys(
        const TWRecentItemsRule&, const TWPathPlanner::Folder&, const std::string& name, const std::string& path);
    TWPlannedItem& addItem(TWPlannedItem&, TWPlannedChange);
    void sayCannotOpen(const std::string& path, std::string_view reason, Effect);
    void say(TWReportLine, Effect = Effect::None);
    void sayRunning(const TWRecentItemsRule&);

    const TWPathPlanner& planner_;
    const TWPlaces& places_;
    const TWOtherPrograms& programs_;
    const std::vector<TWRecentItemsRule>& rules_;
    TWPlanStream::Sink& sink_;
    TWPlan part_; // not put yet
    std::uint32_t rule_ = 0; // index of the rule being planned
    bool fails_ = false; // what the job will report so far, if all deletions succeed
    bool incomplete_ = false;
    std::uint32_t planned_ = 0; // items that were put
    std::map<std::string, std::map<std::string, std::uint32_t>>
        keys_; // the first item of each, by the file's real path
    std::set<std::string> deleted_; // real paths of files that an earlier rule deletes
    std::optional<TWRunningApplications> running_; // once it was needed
};
