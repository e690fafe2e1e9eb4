#include "plist/TWBinaryObjectWriter.h"

#include <algorithm>
#include <bit>

namespace {

std::size_t sizeFor(std::uint64_t number)
{
    return number < 1u << 8 ? 1 : number < 1u << 16 ? 2 : number < 1ull << 32 ? 4 : 8;
}

}

TWBinaryObjectWriter::TWBinaryObjectWriter(std::string_view beginning, std::size_t objectCount)
    : output_(beginning)
    , referenceSize_(sizeFor(objectCount - 1))
{
    offsets_.reserve(objectCount);
}

void TWBinaryObjectWriter::addMarker(unsigned type, std::size_t count)
{
    output_ += static_cast<char>(type << 4 | std::min<std::size_t>(count, 0xf));
    if (count >= 0xf)
        addInteger(static_cast<std::int64_t>(count));
}

// Integers of fewer than 8 bytes are unsigned.
void TWBinaryObjectWriter::addInteger(std::int64_t number)
{
    const std::size_t size = number < 0 ? 8 : sizeFor(static_cast<std::uint64_t>(number));
    output_ += static_cast<char>(0x10 | std::countr_zero(size));
    addNumber(static_cast<std::uint64_t>(number), size);
}

void TWBinaryObjectWriter::addNumber(std::uint64_t number, std::size_t size)
{
    for (std::size_t i = size; i > 0; i--)
        output_ += static_cast<char>(number >> 8 * (i - 1));
}

void TWBinaryObjectWriter::addTable(std::uint64_t root)
{
    const std::size_t table = output_.size();
    const std::size_t offsetSize = sizeFor(table);
    for (const std::size_t offset : offsets_)
        addNumber(offset, offsetSize);
    addNumber(0, 6);
    addNumber(offsetSize, 1);
    addNumber(referenceSize_, 1);
    addNumber(offsets_.size(), 8);
    addNumber(root, 8);
    addNumber(table, 8);
}
