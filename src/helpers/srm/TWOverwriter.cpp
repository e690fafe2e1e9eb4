#include "TWOverwriter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char Stopped[] = "stopped before it was overwritten completely, kept";
constexpr char Shortened[]
    = "another program shortened it meanwhile, kept; what was cut off was perhaps not overwritten";
constexpr char KeepsGrowing[] = "another program keeps writing to it, kept";

// How many times additions are overwritten before the file counts as one that keeps growing.
constexpr int MostRounds = 5;

constexpr std::size_t BufferSize = 1 << 20;
constexpr off_t PageSize = 4096;

// A pass writes either random bytes or a pattern of three bytes.
constexpr std::int32_t Random = -1;

constexpr std::int32_t SimplePasses[] = { Random };

// Writes every bit as 0 and as 1, uniformly and alternating, between random passes. In every table the first pass is
// random, because one random pass achieves the most if the work is interrupted, and so is the last, so that the result
// reveals nothing.
constexpr std::int32_t MediumPasses[] = { Random, 0x000000, 0xFFFFFF, Random, 0x555555, 0xAAAAAA, Random };

// The same with every repeated four-bit pattern and its complement, then patterns that repeat every three bits, in all
// three shifts. Eleven random passes are spread over the start, the middle and the end.
constexpr std::int32_t FullPasses[] = {
    Random, Random, Random, Random, //
    0x000000, 0xFFFFFF, 0x555555, 0xAAAAAA, 0x333333, 0xCCCCCC, 0x666666, 0x999999, //
    0x111111, 0xEEEEEE, 0x222222, 0xDDDDDD, 0x444444, 0xBBBBBB, 0x777777, 0x888888, //
    Random, Random, Random, //
    0x0F0F0F, 0xF0F0F0, 0x924924, 0x6DB6DB, 0x492492, 0xB6DB6D, 0x249249, 0xDB6DB6, //
    Random, Random, Random, Random, //
};
static_assert(std::size(MediumPasses) == 7 && std::size(FullPasses) == 35);

// The size to which a file is extended so that its last block is overwritten completely: the rest of the block may hold
// an older file's data, and a partly written page would have to be read from the disk first. Blocks count as at most 64
// KiB, because network file systems report a transfer size of a megabyte as their block size and no disk allocates more
// at once.
off_t roundedUpToBlock(off_t size, off_t blockSize)
{
    constexpr off_t LargestBlock = off_t{ 64 } * 1024;
    const off_t block = std::clamp<off_t>(blockSize, 1, LargestBlock);
    const off_t slack = (block - size % block) % block;
    return size <= std::numeric_limits<off_t>::max() - slack ? size + slack : size;
}

// Tries to take a write lease, which the kernel grants only on a file that nobody else has open, and returns it at
// once. Also returns true if the kernel cannot tell, as on network file systems or for another user's file.
bool mayBeOpenElsewhere(int file)
{
    if (fcntl(file, F_SETLEASE, F_WRLCK) != 0)
        return true;
    fcntl(file, F_SETLEASE, F_UNLCK);
    return false;
}

}

TWOverwriter::TWOverwriter(TWOverwriteLevel level, TWRandom& random, const TWHeldSignals& signals)
    : passes_(passes(level))
    , random_(random)
    , signals_(signals)
    , buffer_(std::make_unique_for_overwrite<unsigned char[]>(BufferSize))
{
}

std::span<const TWOverwriter::Pass> TWOverwriter::passes(TWOverwriteLevel level)
{
    switch (level) {
    case TWOverwriteLevel::Simple:
        return SimplePasses;
    case TWOverwriteLevel::Medium:
        return MediumPasses;
    case TWOverwriteLevel::Full:
        break;
    }
    return FullPasses;
}

const char* TWOverwriter::overwrite(int file)
{
    struct stat facts = {};
    if (fstat(file, &facts) != 0)
        return strerror(errno);
    // Does not extend a file that another program may have open: that program may go on writing at the old end, and the
    // size would not show it.
    blockSize_ = mayBeOpenElsewhere(file) ? 1 : facts.st_blksize;
    overwritten_.clear();
    size_ = 0;
    for (int round = 0; round < MostRounds; ++round) {
        Extents found;
        if (const char* problem = findAdditions(file, found))
            return problem;
        if (found.empty())
            return nullptr;
        if (const char* problem = overwriteExtents(file, found))
            return problem;
    }
    return KeepsGrowing;
}

// Finds the data outside the extents that are already overwritten; at first that is the whole file.
const char* TWOverwriter::findAdditions(int file, Extents& found)
{
    if (const char* problem = checkSize(file))
        return problem;
    off_t at = 0;
    for (const Extent& done : overwritten_) {
        appendData(file, { at, done.begin }, found);
        at = done.end;
    }
    appendData(file, { at, size_ }, found);
    if (!found.empty() && found.back().end == size_)
        found.back().end = roundedUpToBlock(size_, blockSize_);
    return nullptr;
}

void TWOverwriter::appendData(int file, Extent gap, Extents& found)
{
    while (gap.begin < gap.end) {
        off_t begin = lseek(file, gap.begin, SEEK_DATA);
        if ((begin < 0 && errno == ENXIO) || begin >= gap.end)
            return;
        off_t end = begin < 0 ? -1 : lseek(file, begin, SEEK_HOLE);
        // The file system cannot tell, so everything counts as data.
        if (end <= begin) {
            begin = gap.begin;
            end = gap.end;
        }
        found.push_back({ begin, std::min(end, gap.end) });
        gap.begin = end;
    }
}

const char* TWOverwriter::overwriteExtents(int file, const Extents& extents)
{
    for (const Pass pass : passes_) {
        if (const char* problem = writePass(file, pass, extents))
            return problem;
    }
    overwritten_.insert(overwritten_.end(), extents.begin(), extents.end());
    std::sort(overwritten_.begin(), overwritten_.end(),
        [](const Extent& one, const Extent& other) { return one.begin < other.begin; });
    return nullptr;
}

const char* TWOverwriter::writePass(int file, Pass pass, const Extents& extents)
{
    if (pass != Random) {
        off_t longest = 0;
        for (const Extent& extent : extents)
            longest = std::max(longest, extent.end - extent.begin);
        fillWithPattern(pass, std::size_t(std::min<off_t>(longest, BufferSize)));
    }
    for (const Extent& extent : extents) {
        if (const char* problem = writeExtent(file, pass, extent))
            return problem;
    }
    if (fdatasync(file) != 0)
        return strerror(errno);
    // Drops the written pages from the cache, because they will not be read again. A partial last page stays, because
    // the next pass would have to read it first.
    if (const off_t wholePages = size_ - size_ % PageSize)
        posix_fadvise(file, 0, wholePages, POSIX_FADV_DONTNEED);
    return nullptr;
}

const char* TWOverwriter::writeExtent(int file, Pass pass, Extent extent)
{
    while (extent.begin < extent.end) {
        if (signals_.pending())
            return Stopped;
        if (const char* problem = checkSize(file))
            return problem;
        const std::size_t length = std::size_t(std::min<off_t>(extent.end - extent.begin, BufferSize));
        if (pass == Random)
            random_.fill(buffer_.get(), length);
        const ssize_t written = pwrite(file, buffer_.get(), length, extent.begin);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return strerror(written < 0 ? errno : EIO);
        // Lets the disk start while the next block is prepared, and keeps a large file from filling the memory with
        // dirty pages. It may fail, because only fdatasync() counts.
        sync_file_range(file, extent.begin, written, SYNC_FILE_RANGE_WRITE);
        extent.begin += written;
        size_ = std::max(size_, extent.begin);
    }
    return nullptr;
}

// A file that has become smaller has freed blocks, perhaps before they were overwritten.
const char* TWOverwriter::checkSize(int file)
{
    const off_t size = lseek(file, 0, SEEK_END);
    if (size < 0)
        return strerror(errno);
    if (size < size_)
        return Shortened;
    size_ = size;
    return nullptr;
}

void TWOverwriter::fillWithPattern(Pass pass, std::size_t length)
{
    const unsigned char bytes[] = {
        static_cast<unsigned char>(pass >> 16),
        static_cast<unsigned char>(pass >> 8),
        static_cast<unsigned char>(pass),
    };
    for (std::size_t at = 0; at < length; ++at)
        buffer_[at] = bytes[at % 3];
}
