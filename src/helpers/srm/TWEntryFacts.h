#pragma once

#include <cstdint>
#include <sys/stat.h>
#include <sys/types.h>

// What stands behind a name in a folder, never followed through a link.
struct TWEntryFacts {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    mode_t mode = 0;
    std::uint32_t links = 0;
    off_t size = 0; // bytes
    off_t blockSize = 1; // bytes
    bool mountPoint = false;

    // 0, or the errno. An empty name asks for the folder descriptor itself.
    int read(int folder, const char* name);

    bool isFolder() const { return S_ISDIR(mode); }
    bool isFile() const { return S_ISREG(mode); }
    bool isSameAs(const TWEntryFacts& other) const { return device == other.device && inode == other.inode; }
};
