#pragma once

#include <functional>
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

    // File name of the script that it interprets, else of the executable.
    std::string programName() const;
};

// A process of this user. Valid during the call.
struct TWLinuxProcessFolder {
    const int folder; // in /proc, opened with O_PATH
    const std::string_view number;
    const std::string executable; // its path; never ""

    // Reads some kilobytes.
    TWLinuxProcess read() const;
};

// Calls the function for all processes of this user, except this one and those that may not be looked at, until it
// returns false. Any thread.
void TWLinuxForEachOwnProcess(const std::function<bool(const TWLinuxProcessFolder&)>&);

// Reads all these processes. Any thread.
std::vector<TWLinuxProcess> TWLinuxOwnProcesses();

// The identifier of the application, or "", that a line of /proc/PID/cgroup names.
std::string TWLinuxApplicationOfControlGroup(std::string_view line);
