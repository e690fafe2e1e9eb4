#pragma once

#include <string>
#include <string_view>

// The control group in which systemd keeps a process.
struct TWLinuxUnit {
    enum class Kind { Desktop, Flatpak, Snap };

    std::string name;
    std::string application; // identifier of the application, as its kind has it; "" if the unit is not for one
    std::string instance; // tells it from other units of the application; many desktops put the process in it
    Kind kind = Kind::Desktop;

    friend bool operator==(const TWLinuxUnit&, const TWLinuxUnit&) = default;

    // True for the unit of systemd itself, which becomes the parent of processes that have lost theirs.
    bool isOfManager() const { return name == "init.scope"; }
};

// The unit that a line of /proc/PID/cgroup names: the innermost one of an application, or that of systemd.
TWLinuxUnit TWLinuxUnitOfControlGroup(std::string_view line);
