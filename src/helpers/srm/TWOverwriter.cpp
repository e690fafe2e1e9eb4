#include "TWOverwriter.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

namespace {

constexpr std::size_t BufferSize = 1 << 20;

// A pass writes either random bytes or three bytes again and again.
constexpr std::int32_t Random = -1;

constexpr std::int32_t SimplePasses[] = { Random };

// Every bit is written as 0 and as 1, as part of even and of alternating runs, between random passes. The first pass is
// random in every table, so that a run that is cut short has done what it could, and the last, so that the result tells
// nothing.
constexpr std::int32_t MediumPasses[] = { Random, 0x000000, 0xFFFFFF, Random, 0x555555, 0xAAAAAA, Random };

// The same, with every repeated four-bit pattern and its complement, then runs of one and two bits in three, whose
// three shifts put every bit into every place of the run; eleven random passes at the start, in the middle and at the
// end.
constexpr std::int32_t FullPasses[] = {
    Random, Random, Random, Random, //
    0x000000, 0xFFFFFF, 0x555555, 0xAAAAAA, 0x333333, 0xCCCCCC, 0x666666, 0x999999, //
    0x111111, 0xEEEEEE, 0x222222, 0xDDDDDD, 0x444444, 0xBBBBBB, 0x777777, 0x888888, //
    Random, Random, Random, //
    0x0F0F0F, 0xF0F0F0, 0x924924, 0x6DB6DB, 0x492492, 0xB6DB6D, 0x249249, 0xDB6DB6, //
    Random, Random, Random, Random, //
};
static_assert(std::size(MediumPasses) == 7 && std::size(FullPasses) == 35);

// The rest of the last block may still hold what another file left there. Network file systems name blocks of a
// megabyte, which are transfer sizes; no disk allocates more than this at once.
constexpr off_t LargestBlock = off_t{ 64 } * 1024;

off_t roundedUpToBlock(off_t end, off_t blockSize)
{
    const off_t block = std::min(blockSize, LargestBlock);
    const off_t slack = (block - end % block) % block;
    return end <= std::numeric_limits<off_t>::max() - slack ? end + slack : end;
}

}

TWOverwriter::TWOverwriter(TWOverwriteLevel level, TWRandom& random)
    : passes_(passes(level))
    , random_(random)
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

int TWOverwriter::overwrite(int file, const TWEntryFacts& facts)
{
    // Asked once: the first pass makes the file longer, up to the end of its last block.
    const std::vector<Extent> extents = allocatedExtents(file, facts);
    if (extents.empty())
        return 0;
    for (const Pass pass : passes_) {
        if (const int error = writePass(file, pass, extents))
            return error;
    }
    return 0;
}

std::vector<TWOverwriter::Extent> TWOverwriter::allocatedExtents(int file, const TWEntryFacts& facts)
{
    std::vector<Extent> extents;
    for (off_t at = 0; at < facts.size;) {
        const off_t begin = lseek(file, at, SEEK_DATA);
        if (begin < 0 && errno == ENXIO)
            break;
        const off_t end = begin < 0 ? -1 : lseek(file, begin, SEEK_HOLE);
        if (end <= begin)
            return { { 0, roundedUpToBlock(facts.size, facts.blockSize) } };
        extents.push_back({ begin, roundedUpToBlock(end, facts.blockSize) });
        at = end;
    }
    return extents;
}

int TWOverwriter::writePass(int file, Pass pass, const std::vector<Extent>& extents)
{
    if (pass != Random)
        fillWithPattern(pass);
    for (const Extent& extent : extents) {
        if (const int error = writeExtent(file, pass, extent))
            return error;
    }
    if (fdatasync(file) != 0)
        return errno;
    // What was written will not be read again and must not push out what will be.
    posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    return 0;
}

int TWOverwriter::writeExtent(int file, Pass pass, Extent extent)
{
    while (extent.begin < extent.end) {
        const std::size_t length = std::size_t(std::min<off_t>(extent.end - extent.begin, BufferSize));
        if (pass == Random)
            random_.fill(buffer_.get(), length);
        const ssize_t written = pwrite(file, buffer_.get(), length, extent.begin);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return written < 0 ? errno : EIO;
        // Lets the disk begin while the next piece is made, and keeps a large file from filling the memory with
        // unwritten pages. Only fdatasync counts: this may fail.
        sync_file_range(file, extent.begin, written, SYNC_FILE_RANGE_WRITE);
        extent.begin += written;
    }
    return 0;
}

void TWOverwriter::fillWithPattern(Pass pass)
{
    const unsigned char bytes[] = {
        static_cast<unsigned char>(pass >> 16),
        static_cast<unsigned char>(pass >> 8),
        static_cast<unsigned char>(pass),
    };
    for (std::size_t at = 0; at < BufferSize; ++at)
        buffer_[at] = bytes[at % 3];
}
