#pragma once

#include <string>
#include <string_view>
#include <vector>

// What the kernel says about a process of this user.
struct TWLinuxProcess {
    std::string executable; // its path
    std::vector<std::string> words; // the first ones of its command line
    std::string application; // identifier of the application, if its control group tells; else ""
    std::string desktopFile; // that it was started from, if its environment tells; else ""

    // File names under which users know it: of the executable, of the first word and of the script that it interprets,
    // with and without their endings. Some may be "".
    std::vector<std::string> programNames() const;
};

// All processes of this user except this one and those that may not be looked at. Reads some kilobytes of each. Any
// thread.
std::vector<TWLinuxProcess> TWLinuxOwnProcesses();

// The identifier of the application, or "", that a line of /proc/PID/cgroup names.
std::string TWLinuxApplicationOfControlGroup(std::string_view line);
