#pragma once

#include "platform/TWMountTable.h"
#include "platform/posix/TWDescriptor.h"

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
