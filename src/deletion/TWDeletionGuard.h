#pragma once

#include "deletion/TWDeletionRules.h"
#include "platform/TWPlaces.h"

#include <functional>

// Keeps the deletion rules up to date. A planner uses the rules as they are when it begins; the deleter asks for the
// current ones for every path. Main thread.
class TWDeletionGuard final {
public:
    TWDeletionGuard(const TWPlaces&, const TWFileSystem&, TWMountTable&, std::string dataFolder);

    // The current rules. Looks for the protected folders again only after renew() or after a volume was mounted or
    // unmounted.
    std::shared_ptr<const TWDeletionRules> rules();

    // Replaces the keep list, which is empty at first. Counts for the next call of rules().
    void setKeepList(TWKeepList);

    // Called before rules are handed out, so that the owner of the keep list can replace it if its file has changed.
    void setBeforeRules(std::function<void()> beforeRules) { beforeRules_ = std::move(beforeRules); }

    // Must be called before a job, because protected folders may have been created, moved or linked since the last one.
    void renew() { rules_.reset(); }

private:
    const TWPlaces& places_;
    const TWFileSystem& fileSystem_;
    TWMountTable& mountTable_;
    const std::string dataFolder_;
    TWKeepList keepList_ = TWKeepList(std::in_place);
    std::function<void()> beforeRules_;
    std::shared_ptr<const TWMountPoints> mountPoints_; // those that rules_ was made with
    std::shared_ptr<const TWDeletionRules> rules_;
};
