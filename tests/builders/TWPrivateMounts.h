#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <string>

// Mounts that only this process and its later threads and children see. They end with the process.
struct TWPrivateMounts {
    // False if this process may not mount anything; the test is then to be skipped.
    static bool begin()
    {
        return unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    }
    static bool mountEmpty(const std::string& path) { return mount("tmpfs", path.c_str(), "tmpfs", 0, nullptr) == 0; }
    static bool bind(const std::string& from, const std::string& to)
    {
        return mount(from.c_str(), to.c_str(), nullptr, MS_BIND, nullptr) == 0;
    }
    // Also while somebody works there.
    static bool detach(const std::string& path) { return umount2(path.c_str(), MNT_DETACH) == 0; }
};
