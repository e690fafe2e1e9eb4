#include "platform/linux/TWLinuxProcesses.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <memory>
#include <string_view>

TWDescriptor TWLinuxOpenProcesses()
{
    return TWDescriptor(open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

std::optional<std::vector<TWLinuxListedProcess>> TWLinuxListProcesses(int processes)
{
    const int folder = openat(processes, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> all(folder < 0 ? nullptr : fdopendir(folder), closedir);
    if (!all)
        return std::nullopt;
    std::vector<TWLinuxListedProcess> listed;
    errno = 0;
    while (const dirent* entry = readdir(all.get())) {
        const std::string_view name = entry->d_name;
        pid_t process = 0;
        const auto parsed = std::from_chars(name.begin(), name.end(), process);
        if (parsed.ptr == name.end() && parsed.ec == std::errc())
            listed.push_back({ process, entry->d_ino });
    }
    return errno == 0 ? std::optional(std::move(listed)) : std::nullopt;
}

void TWLinuxForEachProcess(const std::function<bool(const TWLinuxProcessFolder&)>& call)
{
    const auto processes = TWLinuxOpenProcesses();
    for (const auto& listed : TWLinuxListProcesses(processes.get()).value_or(std::vector<TWLinuxListedProcess>())) {
        const TWLinuxProcessFolder process(processes.get(), std::to_string(listed.process).c_str());
        if (!process.executable().empty() && !call(process))
            return;
    }
}

void TWLinuxForEachOwnProcess(const std::function<bool(const TWLinuxProcessFolder&)>& call)
{
    const auto thisProcess = std::to_string(getpid());
    TWLinuxForEachProcess([&](const TWLinuxProcessFolder& process) {
        return !process.isOwned() || process.number() == thisProcess || call(process);
    });
}

std::vector<TWLinuxProcess> TWLinuxOwnProcesses()
{
    std::vector<TWLinuxProcess> processes;
    TWLinuxForEachOwnProcess([&](const TWLinuxProcessFolder& process) {
        processes.push_back(process.read());
        return true;
    });
    return processes;
}
