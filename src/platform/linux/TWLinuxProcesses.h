#pragma once

#include "platform/linux/TWLinuxProcessFolder.h"

#include <functional>

// A process as the list of all processes has it. The entry is another one when the identifier has gone to another
// process, and may be another one for the same process.
struct TWLinuxListedProcess {
    pid_t process;
    ino_t entry;
};

// All processes. Nothing if they cannot be listed. processes is /proc, opened.
std::optional<std::vector<TWLinuxListedProcess>> TWLinuxListProcesses(int processes);

// Opens /proc.
TWDescriptor TWLinuxOpenProcesses();

// Calls the function for all processes that may be looked at, this one included, until it returns false. Root may look
// at those of all users. Any thread.
void TWLinuxForEachProcess(const std::function<bool(const TWLinuxProcessFolder&)>&);

// Calls the function for all processes of this user, except this one and those that may not be looked at, until it
// returns false. Any thread.
void TWLinuxForEachOwnProcess(const std::function<bool(const TWLinuxProcessFolder&)>&);

// Reads all these processes. Any thread.
std::vector<TWLinuxProcess> TWLinuxOwnProcesses();
