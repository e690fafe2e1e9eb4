#pragma once

#include "cleaners/TWFilesRule.h"
#include "cleaners/TWPathPlanner.h"
#include "cleaners/TWPlanStream.h"
#include "platform/TWPlaces.h"
#include "support/TWKeywordMatcher.h"

// Turns Files rules into a plan: what the active rules come to on this disk, at this moment. For one plan. Any thread.
class TWFilesPlanner final {
public:
    // Takes the parts of the plan in order; called on any thread, once at a time.
    using Put = std::function<void(TWPlan)>;

    // Everything given must outlive the planner. Numbers of rules in the plan are places in the list of rules.
    TWFilesPlanner(const TWPathPlanner&, const TWPlaces&, const std::vector<TWFilesRule>& rules,
        const std::vector<std::string>& words, Put, const TWCancellation&);

    // Inactive rules are passed over. When cancelled, stops early.
    void plan();

private:
    using Folder = TWPathPlanner::Folder;

    bool planRule(const TWFilesRule&);
    void planItem(const std::string& path);
    bool planFolder(const TWFilesRule&, const std::string& path);
    void planContents(const Folder&);

    // Items in the folder whose names contain a keyword. A matching folder is taken whole; if recursive, folders that
    // do not match are searched in turn, but never a link, a file package or a mounted volume.
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
    std::size_t planned_ = 0; // items of all parts
    std::uint32_t rule_ = 0; // that is being planned
};
