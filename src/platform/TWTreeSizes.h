#pragma once

#include "platform/TWTreeWalk.h"

struct TWTreeSize {
    std::uint64_t items = 0; // everything inside and the path itself
    std::uint64_t bytes = 0; // space taken on disk, a file with several names counted once
    std::uint64_t unknown = 0; // folders and entries that are there but could not be looked at
};

struct TWTreeSizes {
    std::vector<TWTreeSize> sizes; // of each path, in the order of the paths; zeros for a path where nothing is
    TWWalkEnd end = TWWalkEnd::Complete; // otherwise the sizes are too small

    TWTreeSize total() const;
};

// Adds up the trees at the paths, on all cores, without following links at the end of a path or below it. What another
// file system holds is not counted; a folder on which something is mounted is an item without a size. Any thread.
TWTreeSizes TWAddUpTrees(
    const TWFileSystem&, std::vector<std::string> paths, const TWCancellation&, unsigned threads = TWAllCores);
