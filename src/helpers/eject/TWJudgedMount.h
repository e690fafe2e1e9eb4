#pragma once

#include "platform/linux/TWLinuxMountInfo.h"
#include "platform/posix/TWDescriptor.h"

#include <string>
#include <vector>

// The mount that a path leads to at this moment, and whether it may be unmounted.
struct TWJudgedMount {
    std::string objection; // one line; "" if the mount may be unmounted
    TWLinuxMount mount;
    TWDescriptor parent; // the folder above the mount point; it is on another mount, so it holds nothing
    std::string name; // of the mount point in it
};

// The path must be that of a mount point, byte by byte. Never follows a symbolic link and never waits for what is
// mounted there.
TWJudgedMount TWJudgeMount(const std::string& path, const std::vector<std::string>& neededPaths);
