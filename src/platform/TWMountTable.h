#pragma once

#include <string>
#include <vector>

// The mount points of the system, always up to date. Any number of questions costs one look at the table per change of
// it. Main thread.
class TWMountTable {
public:
    virtual ~TWMountTable() = default;

    // Real paths as bytes. An empty list means that the table could not be read: then nothing is known to be safe.
    virtual const std::vector<std::string>& mountPoints() = 0;
};
