#pragma once

#include "platform/TWMountTable.h"
#include "platform/posix/TWDescriptor.h"

#include <string_view>

// The mount points in the text of a mountinfo table, sorted. Empty if any line cannot be parsed.
TWMountPoints TWMountPointsIn(std::string_view mountInfo);

// Reads /proc/self/mountinfo once, and again only after the kernel has signalled a change.
class TWLinuxMountTable final : public TWMountTable {
public:
    TWLinuxMountTable();

    std::shared_ptr<const TWMountPoints> mountPoints() override;

private:
    TWMountPoints read() const;

    TWDescriptor table_;
    std::shared_ptr<const TWMountPoints> mountPoints_;
};
