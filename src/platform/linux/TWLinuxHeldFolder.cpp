#include "platform/linux/TWLinuxHeldFolder.h"

#include "platform/linux/TWLinuxFacts.h"

#include <fcntl.h>

#include <cerrno>
#include <climits>

std::unique_ptr<TWLinuxHeldFolder> TWLinuxHeldFolder::hold(TWDescriptor descriptor, int& error)
{
    if (!descriptor.isOpen()) {
        error = errno;
        return nullptr;
    }
    const auto look = TWLookAt(descriptor.get(), "");
    error = look.error;
    if (!look.isThere())
        return nullptr;
    return std::unique_ptr<TWLinuxHeldFolder>(new TWLinuxHeldFolder(std::move(descriptor), look.facts.identity));
}

TWFileLook TWLinuxHeldFolder::look(const std::string& name) const
{
    if (name.empty() || name.find('/') != std::string::npos || name.find('\0') != std::string::npos)
        return TWFailedLook(EINVAL);
    return TWLookAt(descriptor_.get(), name.c_str());
}

std::vector<TWFileIdentity> TWLinuxHeldFolder::chain() const
{
    std::vector<TWFileIdentity> identities{ identity_ };
    TWDescriptor base;
    std::string up = "..";
    for (;;) {
        const auto look = TWLookAt(base.isOpen() ? base.get() : descriptor_.get(), up.c_str());
        if (!look.isThere())
            return {};
        if (look.facts.identity == identities.back()) // only the root is its own parent
            return identities;
        identities.push_back(look.facts.identity);
        up += "/..";
        if (up.size() < PATH_MAX - 4)
            continue;
        base = TWDescriptor(
            openat(base.isOpen() ? base.get() : descriptor_.get(), up.c_str() + 3, O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!base.isOpen())
            return {};
        up = "..";
    }
}
