#pragma once

#include "platform/TWWorkspace.h"
#include "platform/linux/TWLinuxApplications.h"

class TWLinuxWorkspace final : public TWWorkspace {
public:
    // The file system and the reader of files must outlive it.
    TWLinuxWorkspace(const TWPlaces&, const TWFileSystem&, const TWOwnFiles&, TWLinuxApplications::Session);

    // The workspace must outlive them.
    std::unique_ptr<TWRunningCopies> runningCopies(const std::vector<std::string>& paths) const override;

private:
    const TWPlaces places_;
    const TWFileSystem& fileSystem_;
    const TWLinuxApplications applications_;
};
