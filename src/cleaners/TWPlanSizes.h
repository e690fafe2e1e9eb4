#pragma once

#include "cleaners/TWPlan.h"
#include "platform/TWBackgroundStream.h"
#include "platform/TWTreeSizes.h"

// The space on disk that the items of a plan take, a folder with its contents. Found in the background, in the plan's
// order, with all cores. Destroying it ends that without a further call. Main thread.
class TWPlanSizes final {
public:
    // Says by item which ones count; the others get no size. Called once, on another thread.
    using Counts = std::function<std::vector<bool>(const TWCancellation&)>;

    // The items that a job would delete.
    static Counts wouldBeDeleted(std::shared_ptr<const TWPlan>);

    // What was found in a folder that counts.
    struct Folder {
        std::size_t item = 0;
        std::uint64_t shared = 0; // of its bytes, those of files that have further names outside
        TWTreePrint print;
    };

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

    // Of the items before known(), in their order.
    const std::vector<Folder>& folders() const { return folders_; }

    // One of the items before known().
    bool counts(std::size_t item) const { return counted_[item]; }

    // As far as it is known.
    std::uint64_t total() const { return total_; }

    // Folders and entries inside the items that could not be read, so that the sizes are too small.
    std::uint64_t unreadable() const { return unreadable_; }

    // True after the end if everything could be read and nothing had vanished meanwhile.
    bool complete() const { return ended_ && unreadable_ == 0 && vanished_ == 0; }

private:
    struct Sizes;
    class Measurement;

    void take(Sizes);

    const std::shared_ptr<std::vector<std::uint64_t>> bytes_ = std::make_shared<std::vector<std::uint64_t>>();
    const std::shared_ptr<const std::vector<std::uint64_t>> shared_ = bytes_;
    std::vector<Folder> folders_;
    std::vector<bool> counted_; // by item; empty until the first size is known
    std::uint64_t total_ = 0;
    std::uint64_t unreadable_ = 0;
    std::uint64_t vanished_ = 0;
    bool ended_ = false;
    std::unique_ptr<TWBackgroundStream<Sizes>> measuring_;
};
