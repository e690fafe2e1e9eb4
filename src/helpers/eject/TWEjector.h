#pragma once

#include "TWUnmountWay.h"
#include "platform/TWVolumes.h"
#include "platform/linux/TWLinuxBlockDevice.h"

#include <set>

// Unmounts one volume: as it should be if possible, and else by detaching it from the programs that hold it.
class TWEjector final {
public:
    // The path is that of a mount point, byte by byte.
    TWEjector(std::string path, TWDeadline::Duration total);

    enum class Result {
        Unmounted,
        Mounted,
        StillInUse, // it was only detached, and its device is not certainly free
    };

    // Writes what was tried and answered to standard error.
    Result eject();

private:
    void findWays(const TWLinuxMount&);
    bool unmount(TWUnmountKind, TWDeadline::Duration longest);
    bool unmountBy(TWUnmountWay&, TWUnmountKind, TWDeadline::Duration limit);
    bool detach();
    void reportOnce(const std::string& line);
    bool writeOut() const;
    bool waitUntilFree();
    bool hasDiskImages() const;
    bool isOnDevice() const; // and not on a server, for example: only a device can be pulled out
    TWLinuxBlockDevice::Use use() const; // of the device, after the volume has been detached
    bool isGone() const;

    const std::string path_;
    const TWDeadline deadline_;
    const std::vector<std::string> neededPaths_;
    TWVolume volume_;
    std::set<std::string> reported_; // the same answer is not said twice
    bool wasListed_ = false; // by the system, which therefore tells when the device is free
    bool isOnlyDetached_ = false;
    std::vector<std::unique_ptr<TWUnmountWay>> ways_;
};
