#pragma once

#include "platform/TWFileSystem.h"

class TWLinuxFileSystem final : public TWFileSystem {
public:
    TWFileLook look(const std::string& path, TWLinkAtEnd = TWLinkAtEnd::DoNotFollow) const override;
    std::optional<std::string> realPath(
        const std::string& path, TWLinkAtEnd = TWLinkAtEnd::DoNotFollow, int* error = nullptr) const override;
    std::optional<std::string> linkTarget(const std::string& path) const override;
    std::unique_ptr<TWOpenFolder> openFolder(
        const std::string& realPath, int& error, const TWCancellation* = nullptr) const override;
    std::unique_ptr<TWOpenFile> openFile(const std::string& path, int& error) const override;
    std::unique_ptr<TWHeldFolder> holdFolder(const std::string& realPath, int& error) const override;
};
