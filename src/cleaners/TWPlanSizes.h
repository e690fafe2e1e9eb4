#pragma once

#include "cleaners/TWPlan.h"
#include "platform/TWBackgroundStream.h"

// The space on disk that the items of a plan take, a folder with its contents. Found in the background, in the plan's
// order, with all cores. Destroying it ends that without a further call. Main thread.
class TWPlanSizes final {
public:
    // Says which items count; the others get no size. Any thread.
    using Counts = std::function<bool(std::size_t item)>;

    // Calls grown whenever more is known, and ended once at the end, both on later turns. The file system must outlive
    // the run loop's background work.
    TWPlanSizes(TWRunLoop&, const TWFileSystem&, const std::shared_ptr<const TWPlan>&, Counts,
        std::function<void()> grown, std::function<void()> ended);

    // Ends the work without a further call. What is known stays.
    void stop() { measuring_.reset(); }

    // How many items, from the first one on, have been looked at.
    std::size_t known() const { return bytes_->size(); }

    // By item; 0 for one that does not count. Grows until the end.
    const std::shared_ptr<const std::vector<std::uint64_t>>& bytes() const { return shared_; }

    // As far as it is known.
    std::uint64_t total() const { return total_; }

    // Folders and entries inside the items that could not be read, so that the sizes are too small.
    std::uint64_t unreadable() const { return unreadable_; }

    // True after the end if everything could be read and nothing had vanished meanwhile.
    bool complete() const { return ended_ && unreadable_ == 0 && vanished_ == 0; }

private:
    struct Sizes;
    class Measurement;

    void take(const Sizes&);

    const std::shared_ptr<std::vector<std::uint64_t>> bytes_ = std::make_shared<std::vector<std::uint64_t>>();
    const std::shared_ptr<const std::vector<std::uint64_t>> shared_ = bytes_;
    std::uint64_t total_ = 0;
    std::uint64_t unreadable_ = 0;
    std::uint64_t vanished_ = 0;
    bool ended_ = false;
    std::unique_ptr<TWBackgroundStream<Sizes>> measuring_;
};
