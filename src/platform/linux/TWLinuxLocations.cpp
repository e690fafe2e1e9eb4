#include "platform/linux/TWLinuxLocations.h"

#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <map>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::chrono::seconds TimeToBeTold{ 10 };

using Folders = std::map<std::string, TWLinuxMount>; // by path

// Another user's service does not answer us.
bool isOwnFolder(const TWLinuxMount& mount)
{
    const auto options = TWText::split(mount.superOptions, ',');
    const auto owner = "user_id=" + std::to_string(getuid());
    return mount.type == "fuse.gvfsd-fuse" && std::find(options.begin(), options.end(), owner) != options.end();
}

Folders foldersIn(const TWLinuxMounts& mounts)
{
    Folders folders;
    for (const auto& mount : mounts) {
        if (isOwnFolder(mount))
            folders[mount.point] = mount;
    }
    return folders;
}

TWVolume volumeOf(const TWLinuxLocation& location, const Folders& folders)
{
    TWVolume volume;
    volume.path = location.path;
    volume.device = location.name;
    volume.service = location.owner;
    volume.serviceObject = location.object;
    if (const auto folder = folders.find(std::string(TWPath::parent(location.path))); folder != folders.end()) {
        volume.mount = folder->second.identifier;
        volume.deviceNumber = folder->second.deviceNumber;
    }
    return volume;
}

}

// If the service has died, its mount has gone, but not the programs that serve the locations: they tell the next
// service of them. Until then its list may lack some.
bool TWLinuxLocations::isNew(const std::string& service)
{
    const auto now = std::chrono::steady_clock::now();
    const auto before = std::exchange(service_, service);
    if (!before.empty() && before != service)
        newSince_ = now;
    return newSince_ && now - *newSince_ < TimeToBeTold;
}

TWLinuxLocations::Found TWLinuxLocations::look(const TWLinuxMounts& mounts)
{
    const auto folders = foldersIn(mounts);
    auto unknown = foldersInUse_;
    for (const auto& [path, mount] : folders)
        unknown.insert(path);
    if (unknown.empty())
        return {};
    const auto list = asks_ ? desktop_.locations(patience_) : std::nullopt;
    if (!list || isNew(list->service))
        return { {}, { unknown.begin(), unknown.end() } };
    Found found;
    foldersInUse_.clear();
    for (const auto& location : list->locations) {
        if (!location.path.starts_with('/'))
            continue;
        found.volumes.push_back(volumeOf(location, folders));
        foldersInUse_.emplace(TWPath::parent(location.path));
    }
    return found;
}

bool TWLinuxLocations::mayBeAt(const std::string& path, const TWLinuxMounts& mounts)
{
    return std::any_of(mounts.begin(), mounts.end(), [&](const auto& mount) {
        return isOwnFolder(mount) && path != mount.point && TWPath::isAtOrBelow(path, mount.point);
    });
}

std::optional<std::string> TWLinuxLocations::close(
    const TWVolume& volume, TWLinuxDesktop::Force force, Duration patience)
{
    return desktop_.close({ volume.service, volume.serviceObject, volume.device, volume.path }, force, patience);
}
