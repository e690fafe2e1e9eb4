#pragma once

#include "platform/TWMountTable.h"

// /proc/self/mountinfo, read again only after the kernel has said that it changed.
class TWLinuxMountTable final : public TWMountTable {
public:
    TWLinuxMountTable();
    ~TWLinuxMountTable();

    const std::vector<std::string>& mountPoints() override;

private:
    void read();

    int descriptor_ = -1;
    std::vector<std::string> mountPoints_;
};
