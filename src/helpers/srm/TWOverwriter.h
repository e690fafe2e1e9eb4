#pragma once

#include "TWHeldSignals.h"
#include "TWRandom.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <sys/types.h>
#include <vector>

enum class TWOverwriteLevel { Simple, Medium, Full }; // 1, 7 and 35 passes

// Overwrites the contents of a file in place, pass by pass; each pass is flushed to the disk before the next begins.
// Holes stay holes. Where the disk or the file system writes changed data to a new place (flash, copy-on-write,
// snapshots), the old data cannot be reached.
class TWOverwriter final {
public:
    TWOverwriter(TWOverwriteLevel, TWRandom&, const TWHeldSignals&);

    // Overwrites the file and then whatever other programs have added to it in the meantime. The file must be open for
    // writing. Returns nullptr on success, else the reason why the file must be kept: a write or a flush failed, the
    // file was shortened, it keeps growing, or a signal is pending.
    const char* overwrite(int file);

    // The size of the file that overwrite() was last called for, in bytes.
    off_t size() const { return size_; }

private:
    struct Extent {
        off_t begin;
        off_t end;
    };
    using Extents = std::vector<Extent>; // sorted, not overlapping
    using Pass = std::int32_t;

    static std::span<const Pass> passes(TWOverwriteLevel);
    const char* findAdditions(int file, Extents& found);
    static void appendData(int file, Extent gap, Extents& found);
    const char* overwriteExtents(int file, const Extents&);
    const char* writePass(int file, Pass, const Extents&);
    const char* writeExtent(int file, Pass, Extent);
    const char* checkSize(int file);
    void fillWithPattern(Pass, std::size_t length);

    const std::span<const Pass> passes_;
    TWRandom& random_;
    const TWHeldSignals& signals_;
    const std::unique_ptr<unsigned char[]> buffer_;
    Extents overwritten_; // those of the current file
    off_t size_ = 0;
    off_t blockSize_ = 1;
};
