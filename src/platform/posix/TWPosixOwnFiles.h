#pragma once

#include "platform/TWOwnFiles.h"

class TWPosixOwnFiles final : public TWOwnFiles {
public:
    Contents read(const std::string& path, std::size_t limit) const override;
    int writeAtomically(const std::string& path, std::string_view bytes) const override;
    int makeFolders(const std::string& path) const override;
    int keepDamaged(const std::string& path, std::string& kept) const override;
};
