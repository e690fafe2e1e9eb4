#include "plist/TWBinaryPropertyListReader.h"

#include "plist/TWPropertyList.h"
#include "plist/TWUnicode.h"

#include <bit>
#include <cmath>

namespace {

constexpr std::string_view Magic = "bplist00";
constexpr std::size_t TrailerSize = 32;

constexpr std::string_view Truncated = "the file is cut off or damaged";
// Big-endian, up to 8 bytes.
std::uint64_t unsignedFrom(std::string_view bytes)
{
    std::uint64_t number = 0;
    for (const char byte : bytes)
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

}

TWBinaryPropertyListReader::TWBinaryPropertyListReader(std::string_view bytes)
    : bytes_(bytes)
{
}

std::optional<TWValue> TWBinaryPropertyListReader::read(std::string& problem)
{
    TWValue value;
    if (readTrailer() && readObject(topObject_, value))
        return value;
    problem = problem_;
    return std::nullopt;
}

bool TWBinaryPropertyListReader::fail(std::string_view problem)
{
    problem_ = problem;
    return false;
}

bool TWBinaryPropertyListReader::readTrailer()
{
    if (!bytes_.starts_with(Magic))
        return fail("a binary property list of an unknown version");
    if (bytes_.size() < Magic.size() + TrailerSize)
        return fail(Truncated);
    const std::size_t end = bytes_.size() - TrailerSize;
    const std::string_view trailer = bytes_.substr(end);
    offsetSize_ = static_cast<unsigned char>(trailer[6]);
    referenceSize_ = static_cast<unsigned char>(trailer[7]);
    objectCount_ = unsignedFrom(trailer.substr(8, 8));
    topObject_ = unsignedFrom(trailer.substr(16, 8));
    const std::uint64_t table = unsignedFrom(trailer.substr(24, 8));
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8 || table < Magic.size()
        || table > end)
        return fail(Truncated);
    table_ = table;
    return objectCount_ <= (end - table_) / offsetSize_ || fail(Truncated);
}

std::optional<TWBinaryPropertyListReader::Rest> TWBinaryPropertyListReader::objectAt(std::uint64_t number)
{
    if (number >= objectCount_)
        return std::nullopt;
    const std::uint64_t offset = unsignedFrom(bytes_.substr(table_ + number * offsetSize_, offsetSize_));
    if (offset < Magic.size() || offset >= table_)
        return std::nullopt;
    return bytes_.substr(offset, table_ - offset);
}

bool TWBinaryPropertyListReader::readObject(std::uint64_t number, TWValue& value)
{
    const std::optional<Rest> object = objectAt(number);
    if (!object)
        return fail(Truncated);
    const auto marker = static_cast<unsigned char>(object->front());
    const Rest rest = object->substr(1);
    const unsigned kind = marker & 0xf; // or the length, depending on the type
    switch (marker >> 4) {
    case 0x0:
        return readSimple(kind, value);
    case 0x1:
        return readInteger(kind, rest, value);
    case 0x2:
        return readReal(kind, rest, value);
    case 0x3:
        return readDate(kind, rest, value);
    case 0x4:
        return readData(kind, rest, value);
    case 0x5:
        return readASCII(kind, rest, value);
    case 0x6:
        return readUTF16(kind, rest, value);
    case 0x8:
        return fail("it holds a UID, as files of keyed archives do");
    case 0xa:
        return readArray(kind, rest, value);
    case 0xb:
    case 0xc:
        return fail("it holds a set");
    case 0xd:
        return readDictionary(kind, rest, value);
    default:
        return fail("it holds an object of an unknown type");
    }
}

bool TWBinaryPropertyListReader::take(Rest& rest, std::uint64_t length, std::string_view& taken)
{
    if (length > rest.size())
        return fail(Truncated);
    taken = rest.substr(0, length);
    rest.remove_prefix(length);
    return true;
}

// A count of 15 or more follows as an integer object.
bool TWBinaryPropertyListReader::takeCount(unsigned kind, Rest& rest, std::uint64_t& count)
{
    count = kind;
    if (kind != 0xf)
        return true;
    std::string_view marker;
    std::string_view number;
    if (!take(rest, 1, marker))
        return false;
    const auto size = static_cast<unsigned char>(marker[0]);
    if (size < 0x10 || size > 0x13)
        return fail(Truncated);
    if (!take(rest, 1u << (size & 0xf), number))
        return false;
    count = unsignedFrom(number);
    return true;
}

bool TWBinaryPropertyListReader::takeReferences(Rest& rest, std::uint64_t count, std::string_view& references)
{
    if (count > rest.size() / referenceSize_)
        return fail(Truncated);
    return take(rest, count * referenceSize_, references);
}

std::uint64_t TWBinaryPropertyListReader::referenceAt(std::string_view references, std::size_t place) const
{
    return unsignedFrom(references.substr(place * referenceSize_, referenceSize_));
}

// Calls fail() if the budget did not suffice, and returns success.
bool TWBinaryPropertyListReader::charged(bool success)
{
    return success || fail(TWPropertyListBudget::TooLarge);
}

bool TWBinaryPropertyListReader::enter()
{
    // This also stops at a container that contains itself.
    if (depth_ >= TWPropertyList::MaximumDepth)
        return fail(TWPropertyListBudget::TooDeep);
    depth_++;
    return true;
}

bool TWBinaryPropertyListReader::readSimple(unsigned kind, TWValue& value)
{
    if (kind == 0x0)
        return fail("it holds a null");
    if (kind != 0x8 && kind != 0x9)
        return fail("it holds an object of an unknown type");
    value = kind == 0x9;
    return true;
}

// Integers of up to 4 bytes are unsigned, those of 8 bytes are signed. Other programs write larger ones with 16 bytes;
// such a number is read if it fits into 64 bits.
bool TWBinaryPropertyListReader::readInteger(unsigned kind, Rest rest, TWValue& value)
{
    std::string_view number;
    if (kind > 4)
        return fail("it holds an object of an unknown type");
    if (!take(rest, 1u << kind, number))
        return false;
    const auto low = static_cast<std::int64_t>(unsignedFrom(number.substr(number.size() > 8 ? 8 : 0)));
    if (kind == 4 && static_cast<std::int64_t>(unsignedFrom(number.substr(0, 8))) != (low < 0 ? -1 : 0))
        return fail("it holds an integer that does not fit into 64 bits with a sign");
    value = low;
    return true;
}

bool TWBinaryPropertyListReader::readReal(unsigned kind, Rest rest, TWValue& value)
{
    std::string_view number;
    if (kind != 2 && kind != 3)
        return fail("it holds an object of an unknown type");
    if (!take(rest, 1u << kind, number))
        return false;
    const std::uint64_t bits = unsignedFrom(number);
    if (kind == 2)
        value = double(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    else
        value = std::bit_cast<double>(bits);
    return true;
}

bool TWBinaryPropertyListReader::readDate(unsigned kind, Rest rest, TWValue& value)
{
    std::string_view number;
    if (kind != 3)
        return fail("it holds an object of an unknown type");
    if (!take(rest, 8, number))
        return false;
    const auto seconds = std::bit_cast<double>(unsignedFrom(number));
    if (!std::isfinite(seconds))
        return fail("it holds a date that is no number");
    value = TWDate{ seconds };
    return true;
}

bool TWBinaryPropertyListReader::readData(unsigned kind, Rest rest, TWValue& value)
{
    std::uint64_t count = 0;
    std::string_view bytes;
    if (!takeCount(kind, rest, count) || !take(rest, count, bytes) || !charged(budget_.chargeText(count)))
        return false;
    value = TWData{ std::string(bytes) };
    return true;
}

bool TWBinaryPropertyListReader::readASCII(unsigned kind, Rest rest, TWValue& value)
{
    std::uint64_t count = 0;
    std::string_view text;
    if (!takeCount(kind, rest, count) || !take(rest, count, text) || !charged(budget_.chargeText(count)))
        return false;
    if (!TWUnicode::isASCII(text))
        return fail("it holds a string with wrong bytes");
    value = text;
    return true;
}

bool TWBinaryPropertyListReader::readUTF16(unsigned kind, Rest rest, TWValue& value)
{
    std::uint64_t count = 0;
    std::string_view units;
    if (!takeCount(kind, rest, count))
        return false;
    if (count > rest.size() / 2)
        return fail(Truncated);
    if (!take(rest, count * 2, units))
        return false;
    // Measured first, because a growing string would take several times its memory.
    const std::optional<std::size_t> length = TWUnicode::lengthAsUTF8(units);
    if (!length)
        return fail("it holds a string with an unpaired surrogate");
    if (!charged(budget_.chargeText(*length)))
        return false;
    std::string text;
    text.reserve(*length);
    TWUnicode::appendUTF8FromUTF16(units, text);
    value = std::move(text);
    return true;
}

bool TWBinaryPropertyListReader::readArray(unsigned kind, Rest rest, TWValue& value)
{
    std::uint64_t count = 0;
    std::string_view references;
    if (!enter() || !takeCount(kind, rest, count) || !takeReferences(rest, count, references))
        return false;
    if (!charged(budget_.chargeArray(count)))
        return false;
    TWValue::Array items(count);
    for (std::size_t i = 0; i < count; i++) {
        if (!readObject(referenceAt(references, i), items[i]))
            return false;
    }
    value = std::move(items);
    depth_--;
    return true;
}

// All keys come first, then all values.
bool TWBinaryPropertyListReader::readDictionary(unsigned kind, Rest rest, TWValue& value)
{
    std::uint64_t count = 0;
    std::string_view keys;
    std::string_view values;
    if (!enter() || !takeCount(kind, rest, count) || !takeReferences(rest, count, keys)
        || !takeReferences(rest, count, values) || !charged(budget_.chargeDictionary(count)))
        return false;
    std::vector<TWDictionary::Entry> entries(count);
    for (std::size_t i = 0; i < count; i++) {
        TWValue key;
        if (!readObject(referenceAt(keys, i), key) || !readObject(referenceAt(values, i), entries[i].second))
            return false;
        if (!key.string())
            return fail("it holds a key that is no string");
        entries[i].first = std::move(*key.string());
    }
    value = TWDictionary::fromEntries(std::move(entries));
    depth_--;
    return true;
}
