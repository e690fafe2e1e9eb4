#pragma once

#include "platform/TWOwnFiles.h"

class TWPosixOwnFiles final : public TWOwnFiles {
public:
    Contents read(const std::string& path, std::size_t limit) const override;
    int readPieces(
        const std::string& path, std::size_t limit, const std::function<bool(std::string_view)>& take) const override;
    int writeAtomically(const std::string& path, std::string_view bytes) const override;
    int makeFolders(const std::string& path) const override;
    bool canOthersRedirect(const std::string& realPath) const override;
    void removeLeftovers(const std::string& folder) const override;
    int keepDamaged(const std::string& path, std::size_t limit, std::string& kept) const override;
};
