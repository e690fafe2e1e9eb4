#pragma once

#include "platform/TWFileSystem.h"
#include "platform/posix/TWDescriptor.h"

#include <memory>

class TWLinuxOpenFile final : public TWOpenFile {
public:
    // Opens a regular file at a path relative to a folder. Does not follow a symbolic link at its end. On failure
    // returns nullptr and sets error to the errno.
    static std::unique_ptr<TWLinuxOpenFile> open(int folder, const char* path, int& error);

    TWFileFacts facts() const override;
    int read(std::uint64_t place, std::size_t length, std::string& bytes) const override;

private:
    explicit TWLinuxOpenFile(TWDescriptor descriptor)
        : descriptor_(std::move(descriptor))
    {
    }

    const TWDescriptor descriptor_;
};
