#pragma once

#include "app/TWCleanerTable.h"
#include "cleaners/TWPlanSizes.h"
#include "cleaners/TWPreviewTotal.h"

enum class TWTick { Off, On };

// What one cleaner would do now, with the sizes and with what the user has unticked. Main thread. Destroying it, which
// is allowed inside its calls, ends the work without a further call.
class TWCleanerPreview final {
public:
    // Items that the same rule names stand side by side.
    struct Group {
        std::uint32_t rule; // TWNone for items that no rule names
        std::size_t begin;
        std::size_t end;
    };

    // position is that of the cleaner in the table.
    TWCleanerPreview(int position, const TWCleanerContext& context)
        : position_(position)
        , context_(context)
    {
    }

    // Makes the plan from the settings and lists as they are now, and then finds the sizes. Calls changed whenever
    // something more is known, and ended once at the end, both on later turns.
    void start(const TWSettingsSources&, std::function<void()> changed, std::function<void()> ended);

    // Ends the work. What is not complete by then stays so.
    void stop();

    const TWCleanerRow& row() const { return TWCleanerTable()[static_cast<std::size_t>(position_)]; }
    int position() const { return position_; }

    // What the cleaner warns about, or "". Known from start() on.
    const std::string& warning() const { return warning_; }

    // Nothing at first; then the first of the items, as soon as some are found, and at last the whole plan, which
    // begins with the same items. Until then itemsFound() grows.
    const std::shared_ptr<const TWPlan>& plan() const { return plan_; }
    bool isPlanned() const { return isPlanned_; } // plan() is the whole plan
    std::size_t itemsFound() const { return itemsFound_; }

    // How many items, from the first one on, have a known size.
    std::size_t itemsSized() const { return sizes_ ? sizes_->known() : 0; }

    // Space on disk, for a folder with its contents; 0 for an item that would be left alone. The item must be one of
    // the sized ones.
    std::uint64_t bytes(std::size_t item) const { return (*bytes_)[item]; }

    // Folders and entries inside the items that could not be read, so that the sizes are too small.
    std::uint64_t unknown() const { return sizes_ ? sizes_->unreadable() : 0; }

    // Of the items of plan().
    const std::vector<Group>& groups() const { return groups_; }

    // The plan and all sizes are known.
    bool isComplete() const { return isComplete_; }

    // Not everything could be looked at, or a run would fail.
    bool hasProblem() const;

    std::string rule(const TWPlannedItem& item) const { return reasons_.rule(item); }
    std::string ruleName(const TWPlannedItem& item) const { return reasons_.ruleName(item); }
    std::string word(const TWPlannedItem& item) const { return reasons_.word(item); }

    // Why a run would leave the item alone, or "".
    std::string refusal(const TWPlannedItem& item) const { return TWPlanReasons::refusal(*plan_, item); }

    // Call these once there is a plan. At first everything is ticked. A group cannot be ticked or unticked before the
    // whole plan is known, because more items of it may follow.
    bool isTicked(std::size_t item) const { return !unticked_[item]; }
    void setTicked(std::size_t item, TWTick);
    void setTicked(const Group&, TWTick);
    void setAllTicked(TWTick);

    // What code on another thread may use: a copy that later changes of ticks do not reach. The cleaner is not set.
    TWPreviewShare share() const { return { plan_, bytes_, unticked_, itemsSized() }; }

    // The texts of rule() and word(). They stay as they were at start().
    const TWPlanReasons& reasons() const { return reasons_; }

    // False if nothing is to be carried out: the preview is not complete, or everything that would be deleted is
    // unticked. A cleaner that found nothing, would fail or could not read something takes part, to say so, unless
    // everything of it was unticked at once.
    bool takesPart() const;

    // What is ticked and would not be refused. Call this and expectFolders() only if the cleaner takes part.
    TWPlannedJob job() const;

    // Tells the check what was found in the folders that are ticked.
    void expectFolders(TWPreviewCheck&) const;

private:
    void findGroups(const TWPlan&);
    void showFirstItems(const TWPlan& soFar);
    void measure(TWPlan);
    bool findWhetherItTakesPart() const;

    const int position_;
    const TWCleanerContext context_;
    std::function<void()> changed_;
    std::function<void()> ended_;
    std::unique_ptr<TWCleaner> cleaner_;
    std::string warning_;
    TWPlanReasons reasons_;
    std::shared_ptr<const TWPlan> plan_;
    std::size_t itemsFound_ = 0;
    std::vector<Group> groups_; // of plan_
    std::vector<Group> foundGroups_; // of the plan while it grows
    bool isPlanned_ = false;
    bool isComplete_ = false;
    bool allUnticked_ = false; // decides for items that are not known yet, and for a plan without items
    std::vector<bool> unticked_; // by item
    mutable std::optional<bool> takesPart_; // nothing before it is asked for and after a change of ticks
    std::unique_ptr<TWRunLoopHandle> planning_;
    std::unique_ptr<TWPlanSizes> sizes_; // once there is the whole plan
    std::shared_ptr<const std::vector<std::uint64_t>> bytes_
        = std::make_shared<const std::vector<std::uint64_t>>(); // those of sizes_
};
