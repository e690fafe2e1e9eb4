#pragma once

#include "platform/TWLock.h"

class TWPosixLocks final : public TWLocks {
public:
    TWLockResult tryLock(const std::string& path) override;
};
