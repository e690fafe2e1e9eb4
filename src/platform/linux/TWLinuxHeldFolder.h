#pragma once

#include "platform/TWFileSystem.h"
#include "platform/posix/TWDescriptor.h"

class TWLinuxHeldFolder final : public TWHeldFolder {
public:
    // Takes over an open descriptor of a folder. On failure returns nullptr and sets error to the errno.
    static std::unique_ptr<TWLinuxHeldFolder> hold(TWDescriptor, int& error);

    TWFileIdentity identity() const override { return identity_; }
    TWFileLook look(const std::string& name) const override;
    std::vector<TWAncestor> chain() const override;
    int descriptor() const override { return descriptor_.get(); }

private:
    TWLinuxHeldFolder(TWDescriptor descriptor, TWFileIdentity identity)
        : descriptor_(std::move(descriptor))
        , identity_(identity)
    {
    }

    TWDescriptor descriptor_;
    TWFileIdentity identity_;
};
