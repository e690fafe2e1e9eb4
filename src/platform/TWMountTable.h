#pragma once

#include <memory>
#include <string>
#include <vector>

// Real paths of the mount points as bytes, sorted. Empty if the table could not be read; then no path may be taken to
// be free of mounts.
using TWMountPoints = std::vector<std::string>;

// The mount points of the system. Main thread.
class TWMountTable {
public:
    virtual ~TWMountTable() = default;

    // The current mount points: the same object as before until the table changes. Costs one system call if nothing has
    // changed.
    virtual std::shared_ptr<const TWMountPoints> mountPoints() = 0;
};
