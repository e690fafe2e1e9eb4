#pragma once

#include "platform/TWRunLoop.h"
#include "support/TWPath.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// A mounted file system, or a network folder, a phone or the like that a service of the desktop shows as a folder.
struct TWVolume {
    std::string path; // the mount point, a real path, as bytes
    std::string device; // what is mounted there, as the table or the service says: "/dev/sdb1", "server:/share"
    std::uint64_t mount = 0; // identifier of the mount; may be given again after it has gone
    std::uint64_t deviceNumber = 0; // of the file system; may be given again as well
    std::uint64_t disk = 0; // serial number that the system has given to the disk when it appeared; 0 if it is on none
    std::string service{}; // the program that shows it, by a name that is never given again; "" if the system does
    std::string serviceObject{}; // its name for that program

    friend bool operator==(const TWVolume&, const TWVolume&) = default; // true means: the same mount of the same disk

    // The same without the disk, which may have been pulled out of the mount.
    bool isSameMount(const TWVolume& other) const
    {
        return path == other.path && device == other.device && mount == other.mount
            && deviceNumber == other.deviceNumber && service == other.service && serviceObject == other.serviceObject;
    }
};

// What keeps a volume in use.
struct TWVolumeUse {
    // What holds it, each once: programs with files on it, such as "okular (4711)", volumes that are mounted inside,
    // disk images on it. Other users' programs are not seen.
    std::vector<std::string> holders;
    // Something holds it, whether it can be named or not; false if nothing tells of any. Of a volume that has been
    // unmounted: its device may not be pulled out yet, so always false if it was on none, as those of a service.
    bool isInUse = false;
};

// The volumes of the system, and what happens to them.
class TWVolumes {
public:
    virtual ~TWVolumes() = default;

    // Those that file managers show, in the order in which they were mounted; never the one of "/", the system's, or
    // hidden ones; in a sandbox only those below its root. Nothing if the table could not be read. Main thread; never
    // waits for a volume.
    virtual std::optional<std::vector<TWVolume>> mountedVolumes() = 0;

    // All of them, shown or not; of those at the same path, the topmost one last. Nothing if the table could not be
    // read. Main thread; never waits for a volume.
    virtual std::optional<std::vector<TWVolume>> allMounts() = 0;

    // Folders in which nobody can tell what is mounted, because at the latest look at the volumes a service did not
    // answer in time. What is mounted there is missing in both lists. Main thread.
    virtual std::vector<std::string> unknownFolders() const = 0;

    // Whether the latest look tells what is mounted at the path. Main thread.
    bool isKnown(const std::string& path) const
    {
        const auto folders = unknownFolders();
        return std::none_of(folders.begin(), folders.end(),
            [&](const auto& folder) { return path != folder && TWPath::isAtOrBelow(path, folder); });
    }

    // Those of allMounts() at exactly that path. Nothing if that is not known.
    std::optional<std::vector<TWVolume>> mountsAt(const std::string& path)
    {
        auto mounts = allMounts();
        if (!mounts || !isKnown(path))
            return std::nullopt;
        std::erase_if(*mounts, [&](const TWVolume& mount) { return mount.path != path; });
        return mounts;
    }

    // Calls the function on a later turn after volumes were mounted or unmounted, at most once a second for those of
    // the system, and as often for those of services. Main thread.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> watch(TWRunLoop&, std::function<void()> changed) = 0;

    // Looks for what holds the volume. The volume may have been unmounted since: then its device may still be in use,
    // because it was only detached while files on it were open. A device that is still mounted elsewhere, where the
    // user sees it, counts as free if nothing holds what was detached. Never waits for a volume, but takes long enough
    // to belong into the background. Any thread.
    virtual TWVolumeUse use(const TWVolume&, const TWCancellation&) const = 0;

    // Nothing if it cannot be told. Waits for the volume, possibly without an end, and therefore belongs into the
    // background; while it still waits, the same volume is not asked again. Any thread.
    virtual std::optional<std::uint64_t> freeBytes(const TWVolume&) const = 0;
};
