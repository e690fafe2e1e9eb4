#pragma once

#include "platform/TWFileSystem.h"

class TWPosixFileSystem final : public TWFileSystem {
public:
    bool exists(const std::string& path) const override;
    std::optional<TWFileFacts> facts(const std::string& path, TWLinkAtEnd = TWLinkAtEnd::DoNotFollow) const override;
    std::unique_ptr<TWOpenFolder> openFolder(const std::string& path, TWLinkAtEnd, int* error = nullptr) const override;
    TWTreeSize treeSize(const std::string& path, const TWCancellation&) const override;
    std::optional<std::string> realPath(const std::string& path) const override;
    int makeFolders(const std::string& path) const override;
    Contents read(const std::string& path, std::size_t limit) const override;
    int writeAtomically(const std::string& path, std::string_view bytes) const override;
    int copyFile(const std::string& from, const std::string& to) const override;
};
