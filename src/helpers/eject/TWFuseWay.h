#pragma once

#include "TWUnmountWay.h"

// A user asks FUSE's own program to unmount what the same user has mounted.
class TWFuseWay final : public TWUnmountWay {
public:
    const char* name() const override { return "fusermount3"; }
    bool applies(const TWLinuxMount&) override;
    std::string unmount(const TWJudgedMount&, TWUnmountKind, TWDeadline::Duration limit) override;
};
