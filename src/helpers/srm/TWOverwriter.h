#pragma once

#include "TWEntryFacts.h"
#include "TWRandom.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

enum class TWOverwriteLevel { Simple, Medium, Full }; // 1, 7 and 35 passes

// Overwrites what a file holds, in place, pass by pass, each pass flushed to the disk before the next begins. Where the
// disk or the file system writes changed data to a new place (flash, copies on write, snapshots), the old place is out
// of reach from here.
class TWOverwriter final {
public:
    TWOverwriter(TWOverwriteLevel, TWRandom&);

    // The file must be open for writing. 0, or the errno of the first write or flush that failed.
    int overwrite(int file, const TWEntryFacts&);

private:
    struct Extent {
        off_t begin;
        off_t end;
    };
    using Pass = std::int32_t;

    static std::span<const Pass> passes(TWOverwriteLevel);
    static std::vector<Extent> allocatedExtents(int file, const TWEntryFacts&);
    int writePass(int file, Pass, const std::vector<Extent>&);
    int writeExtent(int file, Pass, Extent);
    void fillWithPattern(Pass);

    std::span<const Pass> passes_;
    TWRandom& random_;
    std::unique_ptr<unsigned char[]> buffer_;
};
