#include "platform/TWAmbiguousPath.h"

#include "support/TWPath.h"

// Checks the path up to each ".." separately, so that the answer does not depend on whether the rest of the path
// exists.
bool TWIsAmbiguousPath(const TWFileSystem& fileSystem, const TWPlaces& places, const std::string& written)
{
    if (places.leavesMovedFolder(written))
        return true;
    const auto path = places.expand(written);
    for (auto slash = path.find("/.."); slash != std::string::npos; slash = path.find("/..", slash + 1)) {
        const auto end = slash + 3;
        if (end < path.size() && path[end] != '/')
            continue; // a name like "..x"
        const auto climbing = path.substr(0, end);
        const auto asShellSees = fileSystem.realPath(climbing, TWLinkAtEnd::Follow);
        const auto asTidewellSees = fileSystem.realPath(TWPath::standardize(climbing, ""), TWLinkAtEnd::Follow);
        if (asShellSees != asTidewellSees)
            return true;
    }
    return false;
}
