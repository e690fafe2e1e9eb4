#include "platform/TWPlaces.h"

#include "support/TWPath.h"

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

std::string TWPlaces::standardize(const std::string& path) const
{
    return TWPath::standardize(expand(path), home);
}

std::string TWPlaces::abbreviate(const std::string& path) const
{
    const auto abbreviated = TWPath::abbreviateTilde(path, home);
    // If $XDG_CACHE_HOME is not ~/.cache, for example, a path in ~/.cache itself has no short form.
    return standardize(abbreviated) == TWPath::standardize(path, home) ? abbreviated : path;
}
