#pragma once

#include "TWUnmountWay.h"

// Root asks the kernel.
class TWRootWay final : public TWUnmountWay {
public:
    const char* name() const override { return "the kernel"; }
    bool applies(const TWLinuxMount&) override;
    std::string unmount(const TWJudgedMount&, TWUnmountKind, TWDeadline::Duration limit) override;
};
