#pragma once

#include "deletion/TWDeletionRules.h"
#include "platform/TWPlaces.h"

// Keeps the deletion rules up to date. The planner takes the rules as they are when it begins; the deleter asks again
// for every path. Main thread.
class TWDeletionGuard final {
public:
    TWDeletionGuard(const TWPlaces&, const TWFileSystem&, TWMountTable&, std::string dataFolder);

    // The rules now. Looks for the protected folders again only after renew() or when a volume was mounted or
    // unmounted.
    std::shared_ptr<const TWDeletionRules> rules();

    // Before a job: protected folders may have been made, moved or linked since the last one.
    void renew() { rules_.reset(); }

private:
    const TWPlaces& places_;
    const TWFileSystem& fileSystem_;
    TWMountTable& mountTable_;
    const std::string dataFolder_;
    std::shared_ptr<const TWMountPoints> mountPoints_; // those in rules_
    std::shared_ptr<const TWDeletionRules> rules_;
};
