#include "platform/TWPlaces.h"

#include "support/TWPath.h"

#include <algorithm>
#include <iterator>

namespace {

struct MovedFolder {
    const char* usual; // as written in stored lists
    const std::string TWPlaces::*folder;
};

constexpr MovedFolder MovedFolders[] = {
    { "$XDG_CONFIG_HOME", &TWPlaces::configHome },
    { "$XDG_DATA_HOME", &TWPlaces::dataHome },
    { "$XDG_STATE_HOME", &TWPlaces::stateHome },
    { "$XDG_CACHE_HOME", &TWPlaces::cacheHome },
    { "~/.config", &TWPlaces::configHome },
    { "~/.local/share", &TWPlaces::dataHome },
    { "~/.local/state", &TWPlaces::stateHome },
    { "~/.cache", &TWPlaces::cacheHome },
};

}

std::string TWPlaces::expand(const std::string& path) const
{
    for (const auto& moved : MovedFolders) {
        if (TWPath::isAtOrBelow(path, moved.usual))
            return this->*moved.folder + path.substr(std::string_view(moved.usual).size());
    }
    return TWPath::expandTilde(path, home);
}

bool TWPlaces::isStoredPath(const std::string& path)
{
    return path.starts_with('/') || TWPath::isAtOrBelow(path, "~")
        || std::any_of(std::begin(MovedFolders), std::end(MovedFolders),
            [&](const MovedFolder& moved) { return TWPath::isAtOrBelow(path, moved.usual); });
}

std::string TWPlaces::standardize(const std::string& path) const
{
    return TWPath::standardize(expand(path), home);
}

bool TWPlaces::leavesMovedFolder(const std::string& path) const
{
    for (const auto& moved : MovedFolders) {
        if (!path.starts_with('~') || !TWPath::isAtOrBelow(path, moved.usual))
            continue;
        const auto& folder = this->*moved.folder;
        const auto usual = TWPath::expandTilde(moved.usual, home);
        const auto asMoved = standardize(path);
        const auto asUsual = TWPath::standardize(path, home);
        const bool stays = TWPath::isAtOrBelow(asMoved, folder) && TWPath::isAtOrBelow(asUsual, usual)
            && std::string_view(asMoved).substr(folder.size()) == std::string_view(asUsual).substr(usual.size());
        return asMoved != asUsual && !stays;
    }
    return false;
}

std::string TWPlaces::abbreviate(const std::string& path) const
{
    const auto abbreviated = TWPath::abbreviateTilde(path, home);
    // If $XDG_CACHE_HOME is not ~/.cache, for example, a path in ~/.cache itself has no short form.
    return standardize(abbreviated) == TWPath::standardize(path, home) ? abbreviated : path;
}
