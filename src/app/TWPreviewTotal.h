#pragma once

#include "cleaners/TWPlan.h"

// One cleaner's part of a preview, as far as its total depends on it.
struct TWPreviewShare {
    std::shared_ptr<const TWPlan> plan;
    std::shared_ptr<const std::vector<std::uint64_t>> bytes; // space on disk, by item
    std::vector<bool> unticked; // by item
};

// The numbers of a preview, without quiet items.
struct TWPreviewTotal {
    std::uint64_t items = 0; // would be deleted
    std::uint64_t bytes = 0; // space on disk that they take
    std::uint64_t refused = 0; // would stay, although a rule names them
};

// Adds up what is ticked. An item that several rules or cleaners name, or that lies in a folder that would be deleted,
// counts once; so does a file with several names. Stops early when cancelled. Any thread.
TWPreviewTotal TWAddUpPreview(const std::vector<TWPreviewShare>&, const TWCancellation&);
