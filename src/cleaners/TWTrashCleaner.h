#pragma once

#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWDeletingCleaner.h"

// Empties the user's own Trash: every item in its files folder and then, quietly, the records of the items that are
// gone. An item that could not be deleted keeps its record and can still be restored. Trash folders on other volumes
// are not touched.
class TWTrashCleaner final : public TWDeletingCleaner {
public:
    explicit TWTrashCleaner(const TWCleanerContext&);

    // The folder that holds the items, with the home folder abbreviated.
    void setInfo(std::string trashFolder) { info_ = std::move(trashFolder); }
    const std::string& info() const { return info_; }

    std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown, PlanMade) const override;

private:
    FollowerTest followerTest() const override;

    const TWSettings& settings_;
    std::string info_;
};
