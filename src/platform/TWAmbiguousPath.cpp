#include "platform/TWAmbiguousPath.h"

#include "support/TWPath.h"

bool TWIsAmbiguousPath(const TWFileSystem& fileSystem, const std::string& path)
{
    if (path.find("/..") == std::string::npos)
        return false;
    const auto asShellSees = fileSystem.realPath(path);
    const auto asTidewellSees = fileSystem.realPath(TWPath::standardize(path, ""));
    return asShellSees != asTidewellSees;
}
