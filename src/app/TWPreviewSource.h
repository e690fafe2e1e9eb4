#pragma once

#include "cleaners/TWPreviewTotal.h"

// What happens to a row if the preview is carried out.
enum class TWPreviewFate {
    Deleted,
    DeletedAnyway, // although it is not ticked, because another item deletes it
    Unticked, // stays
    Kept, // stays: it has been put on the keep list, or something in it has
    Refused, // stays
    NotLookedAt, // stays, because the preview was stopped before its cleaner was complete
};

// What the fate of a row depends on.
struct TWPreviewRowState {
    bool refused = false;
    bool kept = false;
    bool lookedAt = true;
    bool ticked = true;
    bool deletedWithAnother = false;

    TWPreviewFate fate() const;
};

// A preview as it is at one moment, for work on another thread.
struct TWPreviewSource {
    std::vector<TWPreviewShare> shares; // of the cleaners whose plans are known
    std::shared_ptr<const std::vector<TWPreviewOverlap>> overlaps;
    std::vector<TWPreviewRow> kept{}; // stay because they were put on the keep list since; sorted
    std::vector<std::uint32_t> notLookedAt{}; // cleaners that stay out, because a stop left them incomplete

    // The row's cleaner must be among the shares.
    const TWPreviewShare& share(TWPreviewRow) const;
    TWPreviewFate fate(TWPreviewRow) const;
};
