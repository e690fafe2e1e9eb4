#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// One line of a mountinfo table. Texts are bytes, without the table's escapes.
struct TWLinuxMount {
    std::uint64_t identifier = 0; // may be given to another mount after this one has gone
    std::uint64_t parent = 0; // identifier of the mount that it is on
    std::uint64_t deviceNumber = 0; // of the file system; files on btrfs have another one
    std::string point; // a real path
    std::string type; // "ext4", "fuse.sshfs"
    std::string source; // "/dev/sdb1", "server:/share", "tmpfs"
    std::string superOptions; // of the file system

    friend bool operator==(const TWLinuxMount&, const TWLinuxMount&) = default;
};

using TWLinuxMounts = std::vector<TWLinuxMount>;

// The mounts in the text of a table, in its order. Empty if any line cannot be parsed. Any thread.
TWLinuxMounts TWLinuxMountsIn(std::string_view mountInfo);

// Reads an open table from its beginning. Empty if it cannot be read. Any thread.
TWLinuxMounts TWLinuxReadMounts(int table);

// Reads the table of this process. Empty if it cannot be read. Waits for no volume. Any thread.
TWLinuxMounts TWLinuxReadMounts();

// Replaces each backslash with three octal digits by the byte that it stands for; fstab has the same escapes.
std::string TWLinuxWithoutMountEscapes(std::string_view);
