#pragma once

#include "cleaners/TWFilesRule.h"
#include "cleaners/TWPathPlanner.h"
#include "cleaners/TWPlanStream.h"
#include "platform/TWPlaces.h"
#include "support/TWKeywordMatcher.h"

// Turns Files rules into a plan: finds what the active rules match on the disk now. Makes one plan. Any thread.
class TWFilesPlanner final {
public:
    // Takes the parts of the plan in order; called on any thread, but never by two at once.
    using Put = std::function<void(TWPlan)>;

    // The arguments must outlive the planner. Rule numbers in the plan are indexes into the list of rules.
    TWFilesPlanner(const TWPathPlanner&, const TWPlaces&, const std::vector<TWFilesRule>& rules,
        const std::vector<std::string>& words, Put, const TWCancellation&);

    // Skips inactive rules. Stops early when cancelled.
    void plan();

private:
    using Folder = TWPathPlanner::Folder;

    bool planRule(const TWFilesRule&);
    void planItem(const std::string& path);
    bool planFolder(const TWFilesRule&, const std::string& path);
    void planContents(const Folder&);

    // Plans items in the folder whose names contain a keyword. A matching folder is planned as a whole. If recursive,
    // also searches folders that do not match, but never symbolic links, file packages or mounted volumes.
    void itemsContainingKeywordsAtPath(const Folder&, bool recursive);

    void addItem(TWPlan&, const Folder&, std::string_view name, const TWFileLook&);
    void sayUnreadable(const std::string& path, int error);
    void putPart();

    const TWPathPlanner& planner_;
    const TWPlaces& places_;
    const std::vector<TWFilesRule>& rules_;
    const TWKeywordMatcher keywords_;
    const Put put_;
    const TWCancellation& cancellation_;
    TWPlan part_; // not put yet
    std::size_t planned_ = 0; // number of items in all parts
    std::uint32_t rule_ = 0; // index of the rule being planned
};
