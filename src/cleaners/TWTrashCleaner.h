#pragma once

#include "cleaners/TWCleanerContext.h"
#include "cleaners/TWDeletingCleaner.h"

// Empties the user's own Trash: deletes every item in its files folder and then, without a report, the records of the
// items that are gone. An item that could not be deleted keeps its record and can still be restored. Does not touch
// Trash folders on other volumes.
class TWTrashCleaner final : public TWDeletingCleaner {
public:
    explicit TWTrashCleaner(const TWCleanerContext&);

    // The Trash folder, with the home folder abbreviated to "~".
    void setInfo(std::string trashFolder) { info_ = std::move(trashFolder); }
    const std::string& info() const { return info_; }

    std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown, PlanMade) const override;

private:
    TWSecureMode secureModeNow() const override { return context_.secureMode(); }
    FollowerTest followerTest() const override;

    const TWCleanerContext context_;
    std::string info_;
};
