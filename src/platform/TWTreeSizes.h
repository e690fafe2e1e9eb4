#pragma once

#include "platform/TWTreeWalk.h"

#include <span>

// Tells whether two looks at a tree found the same things. Sums over the entries, so that the print of a part can be
// taken away from the print of the whole. A folder's own times do not matter, because every deletion in it changes
// them; a new, missing or changed entry does.
struct TWTreePrint {
    std::uint64_t exact = 0; // with the time at which each file's contents or attributes changed
    std::uint64_t contents = 0; // with the time at which each file's contents changed
    bool severalNames = false; // some file in it has another name, there or elsewhere

    void add(const TWFileFacts&);
    void addUnknown();
    TWTreePrint& operator+=(const TWTreePrint&);
    TWTreePrint& operator-=(const TWTreePrint&); // leaves severalNames as it is
};

struct TWTreeSize {
    std::uint64_t items = 0; // the path itself and everything inside
    std::uint64_t bytes = 0; // space taken on disk; a file with several hard links counts once
    std::uint64_t shared = 0; // of these bytes, those of files that have further names outside
    std::uint64_t unknown = 0; // folders and entries that exist but could not be read
    TWTreePrint print;
};

struct TWTreeSizes {
    std::vector<TWTreeSize> sizes; // one per path, in the same order; all zeros if nothing is at the path
    TWWalkEnd end = TWWalkEnd::Complete; // if not Complete, the sizes are too small

    TWTreeSize total() const;
};

// Is told the sizes of the trees from first on, as soon as they are final: each tree once, in order.
using TWTreesSized = std::function<void(std::size_t first, std::span<const TWTreeSize>)>;

// Adds up the trees at the paths on all cores. Does not follow symbolic links at the end of a path or below it. Does
// not count the contents of other file systems: a mount point inside a tree counts as an item without a size. Blocks
// until the end; any thread. Calls sized, if given, one call at a time, on any of the walk's threads; after an end that
// is not Complete it has not been told all trees.
TWTreeSizes TWAddUpTrees(const TWFileSystem&, std::vector<std::string> paths, const TWCancellation&,
    unsigned threads = TWAllCores, const TWTreesSized& sized = nullptr);
