#pragma once

#include "cleaners/TWPlannedActionTexts.h"

// One cleaner's part of a preview, as far as its total and its rows depend on it.
struct TWPreviewShare {
    std::shared_ptr<const TWPlan> plan;
    std::shared_ptr<const std::vector<std::uint64_t>> bytes; // space on disk, by item
    std::vector<bool> unticked; // by item
    std::size_t sized = 0; // so many items, from the first one on, have known sizes; more may follow on the main thread
    std::uint32_t cleaner = 0; // index into TWPreview::cleaners()
};

// One item of a preview.
struct TWPreviewRow {
    std::uint32_t cleaner = 0; // index into TWPreview::cleaners()
    std::uint32_t item = 0; // of its plan

    friend bool operator==(const TWPreviewRow&, const TWPreviewRow&) = default;
    friend auto operator<=>(const TWPreviewRow& a, const TWPreviewRow& b)
    {
        return std::pair(a.cleaner, a.item) <=> std::pair(b.cleaner, b.item);
    }
};

// An item that is not ticked but would be deleted all the same.
struct TWPreviewOverlap {
    TWPreviewRow row;
    TWPreviewRow by; // a ticked item: the same path, or a folder around it
};

// The numbers of a preview, without quiet items.
struct TWPreviewTotal {
    std::uint64_t items = 0; // that something would happen to
    TWPlannedCounts counts; // of these, by what would happen
    std::uint64_t bytes = 0; // space on disk that they take
    std::uint64_t entries = 0; // that files would lose
    std::uint64_t refused = 0; // would stay, although a rule names them
    std::shared_ptr<const std::vector<TWPreviewOverlap>> overlaps
        = std::make_shared<const std::vector<TWPreviewOverlap>>(); // in the order of their rows

    // "12 items, 3.4 GB would be deleted; 2 volumes would be unmounted", without what is refused.
    std::string text() const;
};

// Adds up what is ticked. An item that several rules or cleaners name, or that lies in a folder that would be deleted,
// counts once; so does a file with several names. Stops early when cancelled. Any thread.
TWPreviewTotal TWAddUpPreview(const std::vector<TWPreviewShare>&, const TWCancellation&);

// By item: false for one that would not be deleted, or that TWAddUpPreview() leaves out because another item of the
// same plan deletes it as well. Any thread.
std::vector<bool> TWItemsThatCount(const TWPreviewShare&, const TWCancellation&);
