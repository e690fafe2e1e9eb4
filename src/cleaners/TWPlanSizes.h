#pragma once

#include "cleaners/TWPlan.h"
#include "platform/TWBackgroundStream.h"

// The space on disk that some items of a plan take. Files are known from the plan; folders are added up in the
// background, in the plan's order. Destroying it ends that. Main thread.
class TWPlanSizes final {
public:
    // ended is called once, on a later turn. The file system must outlive the run loop's background work.
    TWPlanSizes(TWRunLoop&, const TWFileSystem&, const std::shared_ptr<const TWPlan>&,
        const std::vector<std::size_t>& items, std::function<void()> ended);

    // In bytes, by position in the list of items; 0 for a folder that has not been added up yet.
    std::uint64_t bytes(std::size_t position) const { return bytes_[position]; }

    // As far as it is known.
    std::uint64_t total() const { return total_; }

    // True if all folders were added up, and completely.
    bool complete() const { return complete_; }

private:
    struct Size {
        std::size_t position;
        std::uint64_t bytes;
        bool complete;
    };

    void take(const std::vector<Size>&);

    std::vector<std::uint64_t> bytes_;
    std::uint64_t total_ = 0;
    bool allKnown_ = true;
    bool complete_ = false;
    std::unique_ptr<TWBackgroundStream<std::vector<Size>>> adding_;
};
