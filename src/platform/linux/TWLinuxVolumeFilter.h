#pragma once

#include "platform/linux/TWLinuxMountInfo.h"

#include <map>

// Which mounts are volumes, by the rules of file managers. Any thread.
class TWLinuxVolumeFilter final {
public:
    struct Setup {
        std::vector<std::string> folders; // below which volumes are mounted
        std::vector<std::string> neededPaths;
        // Everything below the folders is shown then, but for the kernel's own file systems.
        bool sandboxed = false;
    };

    // fstab is the text of that file: its options x-gvfs-show and x-gvfs-hide decide before the folders do.
    TWLinuxVolumeFilter(const Setup&, std::string_view fstab);

    bool shows(const TWLinuxMount&) const;

private:
    void readLine(std::string_view);

    const Setup& setup_;
    std::map<std::string, bool> shown_; // by mount point
};
