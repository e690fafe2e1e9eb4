#pragma once

#include <memory>
#include <string>
#include <vector>

// Real paths of mount points as bytes, sorted. Empty if the table could not be read: then nothing is known to be safe.
using TWMountPoints = std::vector<std::string>;

// The mount points of the system. Main thread.
class TWMountTable {
public:
    virtual ~TWMountTable() = default;

    // The mount points now; the same list as before until the table changes. Asking costs one system call while nothing
    // has changed.
    virtual std::shared_ptr<const TWMountPoints> mountPoints() = 0;
};
