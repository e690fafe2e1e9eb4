#include "platform/linux/TWLinuxWorkspace.h"

#include "platform/linux/TWLinuxRunningCopies.h"

TWLinuxWorkspace::TWLinuxWorkspace(const TWPlaces& places, const TWFileSystem& fileSystem, const TWOwnFiles& files,
    TWLinuxApplications::Session session)
    : places_(places)
    , fileSystem_(fileSystem)
    , applications_(places, fileSystem, files, std::move(session))
{
}

std::unique_ptr<TWRunningCopies> TWLinuxWorkspace::runningCopies(const std::vector<std::string>& paths) const
{
    auto makeList = [this, paths] {
        return std::make_unique<TWLinuxListedApplications>(applications_, places_, fileSystem_, paths);
    };
    return std::make_unique<TWLinuxRunningCopies>(std::move(makeList), places_.desktop);
}
