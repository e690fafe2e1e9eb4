#include "app/TWPreviewSource.h"

#include <algorithm>

TWPreviewFate TWPreviewRowState::fate() const
{
    if (refused)
        return TWPreviewFate::Refused;
    if (kept)
        return TWPreviewFate::Kept;
    if (!lookedAt)
        return TWPreviewFate::NotLookedAt;
    if (ticked)
        return TWPreviewFate::Deleted;
    return deletedWithAnother ? TWPreviewFate::DeletedAnyway : TWPreviewFate::Unticked;
}

const TWPreviewShare& TWPreviewSource::share(TWPreviewRow row) const
{
    return *std::ranges::find(shares, row.cleaner, &TWPreviewShare::cleaner);
}

TWPreviewFate TWPreviewSource::fate(TWPreviewRow row) const
{
    const auto& share = this->share(row);
    return TWPreviewRowState{ .refused = !share.plan->wouldDelete(share.plan->items[row.item]),
        .kept = std::ranges::binary_search(kept, row),
        .lookedAt = std::ranges::find(notLookedAt, row.cleaner) == notLookedAt.end(),
        .ticked = !share.unticked[row.item],
        .deletedWithAnother = std::ranges::binary_search(*overlaps, row, {}, &TWPreviewOverlap::row) }
        .fate();
}
