#pragma once

#include "cleaners/TWCleaner.h"
#include "cleaners/TWPlanSizes.h"
#include "cleaners/TWPlannedActionTexts.h"

// The numbers of a plan, for one line beside a rule or a cleaner.
struct TWPlanSummary {
    std::uint64_t items = 0; // that something would happen to, without quiet and refused ones; counted as in a preview
    TWPlannedCounts counts; // of these, by what would happen
    std::uint64_t bytes = 0; // space on disk that would be freed
    std::uint64_t entries = 0; // that files would lose
    std::uint64_t files = 0; // that lose them
    std::uint64_t refused = 0; // items that the deletion rules refuse
    TWObjection objection; // the reason; "see Preview." if they were refused for different ones
    std::optional<std::string> failure; // if set, the job would fail with this text and delete nothing
    std::string remark; // the first line of the plan that makes the job fail, or else its first line
    bool incomplete = false; // something could not be read

    // Adds the numbers of another plan; the rest stays.
    TWPlanSummary& operator+=(const TWPlanSummary&);

    // "12 items, 3.4 GB", "45 entries in 3 files", "2 applications to quit", or several of them
    std::string itemsAndSize() const;
};

// Makes a cleaner's plan and summarises it, in the background. Destroying it ends the work without a call. Main thread.
class TWPlanSummarizer final {
public:
    // made is called once, on a later turn. The file system must outlive the run loop's background work.
    TWPlanSummarizer(
        std::unique_ptr<TWCleaner>, TWRunLoop&, const TWFileSystem&, std::function<void(const TWPlanSummary&)> made);

private:
    void measure(TWPlan);
    void addUp(const std::shared_ptr<const TWPlan>&);

    TWRunLoop& runLoop_;
    const TWFileSystem& fileSystem_;
    const std::function<void(const TWPlanSummary&)> made_;
    const std::unique_ptr<TWCleaner> cleaner_;
    std::unique_ptr<TWRunLoopHandle> planning_;
    std::unique_ptr<TWPlanSizes> sizes_;
    std::unique_ptr<TWBackgroundStream<TWPlanSummary>> addingUp_;
};
