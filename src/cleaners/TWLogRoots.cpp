#include "cleaners/TWLogRoots.h"

#include "support/TWPath.h"

#include <algorithm>

namespace {

constexpr auto NotALog = "it does not lie in a log folder.";

}

TWLogRoots::TWLogRoots(const TWPlaces& places, std::vector<TWLogSource> sources)
    : places_(places)
    , sources_(std::move(sources))
{
}

const TWLogSource* TWLogRoots::sourceOf(const std::string& path) const
{
    const auto found = std::find_if(sources_.begin(), sources_.end(), [&](const auto& source) {
        return path == source.path || (source.isFolder && TWPath::isAtOrBelow(path, source.path));
    });
    return found == sources_.end() ? nullptr : &*found;
}

std::string TWLogRoots::folderOf(const std::string& path) const
{
    if (const auto* const source = sourceOf(path))
        return source->isFolder ? source->path : "";
    return TWPath::isAtOrBelow(path, systemLogs()) ? systemLogs() : "";
}

bool TWLogRoots::isRoot(const std::string& path) const
{
    return path == systemLogs() || std::any_of(sources_.begin(), sources_.end(), [&](const auto& source) {
        return source.isFolder && source.path == path;
    });
}

TWLogPlace TWLogRoots::find(const TWFileSystem& fileSystem, const std::string& itemPath, int& error) const
{
    TWLogPlace place;
    place.path = places_.standardize(itemPath);
    place.name = TWPath::lastComponent(place.path);
    // Nothing that the scan finds has "." or ".." in it.
    if (place.path != places_.expand(itemPath)) {
        place.objection = TWLogPlace::Ambiguous;
        return place;
    }
    std::string root; // what the path is below; links on the way to it are followed
    if (const auto* const source = sourceOf(place.path))
        root = place.path == source->path ? TWPath::parent(source->path) : source->path;
    else if (place.path != systemLogs() && TWPath::isAtOrBelow(place.path, systemLogs()))
        root = systemLogs();
    if (root.empty() || place.name.empty()) {
        place.objection = NotALog;
        return place;
    }
    const auto real = fileSystem.realPath(root, TWLinkAtEnd::Follow, &error);
    if (real)
        place.realFolder = *real + std::string(TWPath::parent(place.path).substr(root.size()));
    return place;
}
