#pragma once

#include <cstdint>
#include <sys/stat.h>
#include <sys/types.h>
#include <utility>

// What a name in a folder refers to. Never follows a symbolic link.
struct TWEntryFacts {
    using Identity = std::pair<std::uint64_t, std::uint64_t>; // device and inode

    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    mode_t mode = 0;
    std::uint32_t links = 0;
    off_t size = 0; // bytes
    bool mountPoint = false;

    // Reads the facts of a name in an open folder, or of the descriptor itself if the name is "". Returns 0 or the
    // errno.
    int read(int folder, const char* name);

    bool isFolder() const { return S_ISDIR(mode); }
    bool isFile() const { return S_ISREG(mode); }
    bool isSameAs(const TWEntryFacts& other) const { return identity() == other.identity(); }
    Identity identity() const { return { device, inode }; }
};
