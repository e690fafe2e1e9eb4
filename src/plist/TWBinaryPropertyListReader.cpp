#include "plist/TWBinaryPropertyListReader.h"

#include "plist/TWPropertyList.h"
#include "plist/TWUnicode.h"

#include <bit>
#include <cmath>

namespace {

constexpr std::string_view Magic = "bplist00";
constexpr std::string_view Truncated = "the file is cut off or damaged";
constexpr std::string_view UnknownType = "it holds an object of an unknown type";

}

TWBinaryPropertyListReader::TWBinaryPropertyListReader(std::string_view bytes)
    : bytes_(bytes)
    , objects_(bytes)
{
}

std::optional<TWValue> TWBinaryPropertyListReader::read(std::string& problem)
{
    TWValue value;
    if (bytes_.starts_with(Magic) ? readObject(objects_.top(), value)
                                  : fail("a binary property list of an unknown version"))
        return value;
    problem = problem_;
    return std::nullopt;
}

bool TWBinaryPropertyListReader::fail(std::string_view problem)
{
    problem_ = problem;
    return false;
}

bool TWBinaryPropertyListReader::readObject(std::uint64_t number, TWValue& value)
{
    const std::optional<Object> object = objects_.at(number);
    if (!object)
        return fail(Truncated);
    switch (object->type) {
    case TWBinaryObjects::Simple:
        return readSimple(*object, value);
    case TWBinaryObjects::Integer:
        return readInteger(*object, value);
    case TWBinaryObjects::Real:
        return readReal(*object, value);
    case TWBinaryObjects::Date:
        return readDate(*object, value);
    case TWBinaryObjects::Data:
        return readData(*object, value);
    case TWBinaryObjects::ASCII:
        return readASCII(*object, value);
    case TWBinaryObjects::UTF16:
        return readUTF16(*object, value);
    case TWBinaryObjects::UID:
        return fail("it holds a UID, as files of keyed archives do");
    case TWBinaryObjects::Array:
        return readArray(*object, value);
    case TWBinaryObjects::OrderedSet:
    case TWBinaryObjects::Set:
        return fail("it holds a set");
    case TWBinaryObjects::Dictionary:
        return readDictionary(*object, value);
    }
    return fail(UnknownType);
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

bool TWBinaryPropertyListReader::readSimple(const Object& object, TWValue& value)
{
    if (object.count == 0x0)
        return fail("it holds a null");
    if (object.count != 0x8 && object.count != 0x9)
        return fail(UnknownType);
    value = object.count == 0x9;
    return true;
}

// Integers of up to 4 bytes are unsigned, those of 8 bytes are signed. Other programs write larger ones with 16 bytes;
// such a number is read if it fits into 64 bits.
bool TWBinaryPropertyListReader::readInteger(const Object& object, TWValue& value)
{
    const std::string_view number = object.content;
    if (number.size() > 16)
        return fail(UnknownType);
    const auto low = static_cast<std::int64_t>(TWBinaryObjects::unsignedFrom(number.substr(number.size() > 8 ? 8 : 0)));
    if (number.size() == 16
        && static_cast<std::int64_t>(TWBinaryObjects::unsignedFrom(number.substr(0, 8))) != (low < 0 ? -1 : 0))
        return fail("it holds an integer that does not fit into 64 bits with a sign");
    value = low;
    return true;
}

bool TWBinaryPropertyListReader::readReal(const Object& object, TWValue& value)
{
    if (object.content.size() != 4 && object.content.size() != 8)
        return fail(UnknownType);
    const std::uint64_t bits = TWBinaryObjects::unsignedFrom(object.content);
    if (object.content.size() == 4)
        value = double(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    else
        value = std::bit_cast<double>(bits);
    return true;
}

bool TWBinaryPropertyListReader::readDate(const Object& object, TWValue& value)
{
    if (object.content.size() != 8)
        return fail(UnknownType);
    const auto seconds = std::bit_cast<double>(TWBinaryObjects::unsignedFrom(object.content));
    if (!std::isfinite(seconds))
        return fail("it holds a date that is no number");
    value = TWDate{ seconds };
    return true;
}

bool TWBinaryPropertyListReader::readData(const Object& object, TWValue& value)
{
    if (!charged(budget_.chargeText(object.content.size())))
        return false;
    value = TWData{ std::string(object.content) };
    return true;
}

bool TWBinaryPropertyListReader::readASCII(const Object& object, TWValue& value)
{
    if (!charged(budget_.chargeText(object.content.size())))
        return false;
    if (!TWUnicode::isASCII(object.content))
        return fail("it holds a string with wrong bytes");
    value = object.content;
    return true;
}

bool TWBinaryPropertyListReader::readUTF16(const Object& object, TWValue& value)
{
    // Measured first, because a growing string would take several times its memory.
    const std::optional<std::size_t> length = TWUnicode::lengthAsUTF8(object.content);
    if (!length)
        return fail("it holds a string with an unpaired surrogate");
    if (!charged(budget_.chargeText(*length)))
        return false;
    std::string text;
    text.reserve(*length);
    TWUnicode::appendUTF8FromUTF16(object.content, text);
    value = std::move(text);
    return true;
}

bool TWBinaryPropertyListReader::readArray(const Object& object, TWValue& value)
{
    if (!enter() || !charged(budget_.chargeArray(object.count)))
        return false;
    TWValue::Array items(object.count);
    for (std::size_t i = 0; i < object.count; i++) {
        if (!readObject(objects_.reference(object, i), items[i]))
            return false;
    }
    value = std::move(items);
    depth_--;
    return true;
}

bool TWBinaryPropertyListReader::readDictionary(const Object& object, TWValue& value)
{
    if (!enter() || !charged(budget_.chargeDictionary(object.count)))
        return false;
    std::vector<TWDictionary::Entry> entries(object.count);
    for (std::size_t i = 0; i < object.count; i++) {
        TWValue key;
        if (!readObject(objects_.reference(object, i), key)
            || !readObject(objects_.reference(object, object.count + i), entries[i].second))
            return false;
        if (!key.string())
            return fail("it holds a key that is no string");
        entries[i].first = std::move(*key.string());
    }
    value = TWDictionary::fromEntries(std::move(entries));
    depth_--;
    return true;
}
