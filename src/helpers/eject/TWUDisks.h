#pragma once

#include "TWDeadline.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// A block device or a drive, as far as it concerns us. Objects are named by their paths on the bus; "" stands for none.
struct TWUDisksObject {
    std::uint64_t deviceNumber = 0; // 0 for a drive
    std::string encrypted; // the container, if this is what an unlocked one holds
    std::string partitioned; // the device, if this is a partition of it
    std::string drive;
    std::vector<std::string> mountPoints;
    bool isLoop = false; // a disk image
    bool isEjectable = false; // the last three are those of a drive
    bool isRemovable = false;
    bool canPowerOff = false;
};

using TWUDisksObjects = std::map<std::string, TWUDisksObject>;

// The service of the desktops that manages disks.
class TWUDisks final {
public:
    // All objects; none if the service is not installed or does not answer.
    TWUDisksObjects objects(TWDeadline::Duration limit);

    // Calls a method without arguments, but for options. Lets the service ask for a password if somebody is logged in,
    // until a question may have been left without an answer.
    enum class Force { No, Yes };
    struct Answer {
        std::string problem; // in one line; "" if there was none
        bool isRefusal = false; // the user may not do that, or did not give a password
    };
    Answer call(const std::string& object, const char* interface, const char* method, TWDeadline::Duration limit,
        Force force = Force::No);

private:
    bool mayAsk_ = true;
};
