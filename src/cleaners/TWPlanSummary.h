#pragma once

#include "cleaners/TWCleaner.h"
#include "platform/TWBackgroundStream.h"

// What a plan comes to, for one line beside a rule or a cleaner.
struct TWPlanSummary {
    std::uint64_t items = 0; // that would be deleted, quiet ones and refused ones not counted
    std::uint64_t everything = 0; // the same with everything that is inside them
    std::uint64_t bytes = 0; // that they take on disk, with everything in them
    std::uint64_t refused = 0; // items that would not be deleted
    TWObjection objection = nullptr; // to the first of these
    std::optional<std::string> failure; // the job would fail with this text and delete nothing
    std::string remark; // the first line that the planning had to say
    bool incomplete = false; // something could not be looked at
};

// Makes a cleaner's plan and adds up what it comes to, in the background. Destroying it ends that silently. Main
// thread.
class TWPlanSummarizer final {
public:
    // made is called once, on a later turn. The file system must outlive the run loop's background work.
    TWPlanSummarizer(
        std::unique_ptr<TWCleaner>, TWRunLoop&, const TWFileSystem&, std::function<void(const TWPlanSummary&)> made);

private:
    void measure(TWPlan);

    TWRunLoop& runLoop_;
    const TWFileSystem& fileSystem_;
    const std::function<void(const TWPlanSummary&)> made_;
    const std::unique_ptr<TWCleaner> cleaner_;
    std::unique_ptr<TWRunLoopHandle> planning_;
    std::unique_ptr<TWBackgroundStream<TWPlanSummary>> measuring_;
};
