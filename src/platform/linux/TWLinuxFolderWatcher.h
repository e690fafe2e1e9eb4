#pragma once

#include "platform/linux/TWLinuxFolderWatch.h"

class TWLinuxFolderWatcher final : public TWFolderWatcher {
public:
    std::unique_ptr<TWFolderWatch> watch(TWRunLoop& runLoop, Changed changed) const override
    {
        return std::make_unique<TWLinuxFolderWatch>(runLoop, std::move(changed));
    }
};
