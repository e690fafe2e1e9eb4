#pragma once

#include "TWUnmountWay.h"

// A user asks umount, which the administrator allows for the mounts that fstab marks for it.
class TWUserWay final : public TWUnmountWay {
public:
    const char* name() const override { return "umount"; }
    bool applies(const TWLinuxMount&) override;
    std::string unmount(const TWJudgedMount&, TWUnmountKind, TWDeadline::Duration limit) override;
};
