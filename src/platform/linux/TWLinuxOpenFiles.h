#pragma once

#include "platform/TWOpenFiles.h"

class TWLinuxOpenFiles final : public TWOpenFiles {
public:
    std::vector<TWDeletedFile> deletedFiles(const TWCancellation&) const override;
};
