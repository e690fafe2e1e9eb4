#include "platform/linux/TWLinuxSystemMounts.h"

#include "support/TWPath.h"

#include <algorithm>
#include <filesystem>

namespace {

// Nothing in these is a volume, but for the exceptions.
constexpr const char* Trees[] = { "/bin", "/boot", "/dev", "/etc", "/lib", "/lib32", "/lib64", "/libx32", "/lost+found",
    "/nix", "/proc", "/run", "/sbin", "/snap", "/sys", "/usr", "/var" };
constexpr const char* Exceptions[] = { "/run/media", "/var/tmp" };

// Volumes may be in these.
constexpr const char* Folders[]
    = { "/", "/home", "/media", "/mnt", "/opt", "/root", "/run/media", "/srv", "/tmp", "/var/tmp" };

bool isBelowAny(const std::string& point, const auto& folders)
{
    return std::any_of(
        std::begin(folders), std::end(folders), [&](const auto* folder) { return TWPath::isAtOrBelow(point, folder); });
}

}

std::vector<std::string> TWLinuxNeededPaths(const TWPlaces& places)
{
    auto paths = places.realHomes;
    paths.insert(paths.end(), places.realOwnFolders.begin(), places.realOwnFolders.end());
    paths.push_back(places.resources);
    for (auto& path : paths) {
        std::error_code error;
        const auto real = std::filesystem::weakly_canonical(path, error);
        if (!error)
            path = real.string();
    }
    return paths;
}

bool TWLinuxIsSystemMount(const std::string& point, const std::vector<std::string>& neededPaths)
{
    const bool isFolder = std::find(std::begin(Folders), std::end(Folders), point) != std::end(Folders)
        || TWPath::parent(point) == "/home";
    const bool isInTree = isBelowAny(point, Trees) && !isBelowAny(point, Exceptions);
    const bool isNeeded = std::any_of(
        neededPaths.begin(), neededPaths.end(), [&](const auto& path) { return TWPath::isAtOrBelow(path, point); });
    return isFolder || isInTree || isNeeded;
}
