#pragma once

#include "app/TWPreview.h"

// What the items of one rule, of a cleaner or of a whole preview come to, without quiet items. An item that several
// rules name counts for each of them.
struct TWPreviewCount {
    std::uint64_t items = 0;
    std::uint64_t refused = 0; // of these
    std::uint64_t ticked = 0; // of those that are not refused
    std::uint64_t bytes = 0; // space on disk of the ticked ones, as far as it is known

    TWPreviewCount& operator+=(const TWPreviewCount&);

    // Says what a check box beside the count shows.
    bool allTicked() const { return ticked > 0 && ticked + refused == items; }
    bool noneTicked() const { return ticked == 0; }
};

// Counts the items of each rule of a preview in the background, at most a few times a second. Main thread.
class TWPreviewCounts final {
public:
    // Calls changed when there are new numbers. The preview must outlive the counts.
    TWPreviewCounts(TWRunLoop&, const TWPreview&, std::function<void()> changed);

    // The preview has changed; the numbers follow.
    void renew();

    // True if ticks or items may have changed since the numbers were found.
    bool outdated() const { return outdated_ || counting_; }

    // By index into TWPreview::cleaners() and, there, into groups(). Nothing for what has not been counted yet.
    TWPreviewCount of(std::size_t cleaner, std::size_t group) const;
    TWPreviewCount of(std::size_t cleaner) const;

    // The same for a cleaner whose sizes are all known, but each item that several of its rules name counts only once
    // among the ticked ones.
    TWPreviewCount distinct(std::size_t cleaner) const;

    TWPreviewCount all() const;

private:
    struct OfCleaner {
        std::vector<TWPreviewCount> groups;
        std::optional<TWPreviewTotal> total;
    };
    using Counts = std::vector<OfCleaner>;

    void count();

    TWRunLoop& runLoop_;
    const TWPreview& preview_;
    const std::function<void()> changed_;
    Counts counts_;
    TWRunLoop::Clock::time_point counted_{}; // the latest time
    bool outdated_ = false; // the preview has changed since the latest counting began
    std::unique_ptr<TWRunLoopHandle> soon_;
    std::unique_ptr<TWBackgroundStream<Counts>> counting_;
};
