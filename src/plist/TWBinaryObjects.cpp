#include "plist/TWBinaryObjects.h"

#include "plist/TWUnicode.h"

namespace {

constexpr std::size_t HeaderSize = 8;
constexpr std::size_t TrailerSize = 32;

// Takes the count of 15 or more that follows the type as an integer object.
bool takeLongCount(std::string_view& rest, std::size_t& count)
{
    const unsigned marker = rest.empty() ? 0u : static_cast<unsigned char>(rest[0]);
    const std::size_t size = std::size_t{ 1 } << (marker & 3);
    if (marker < 0x10 || marker > 0x13 || rest.size() < 1 + size)
        return false;
    count = TWBinaryObjects::unsignedFrom(rest.substr(1, size));
    rest.remove_prefix(1 + size);
    return count <= rest.size(); // so that no length computed from it overflows
}

}

TWBinaryObjects::TWBinaryObjects(std::string_view bytes)
    : bytes_(bytes)
{
    if (bytes_.starts_with("bplist00") && bytes_.size() >= HeaderSize + TrailerSize)
        readTrailer();
}

void TWBinaryObjects::readTrailer()
{
    const std::size_t end = bytes_.size() - TrailerSize;
    const std::string_view trailer = bytes_.substr(end);
    offsetSize_ = static_cast<unsigned char>(trailer[6]);
    referenceSize_ = static_cast<unsigned char>(trailer[7]);
    const std::uint64_t count = TWBinaryObjects::unsignedFrom(trailer.substr(8, 8));
    top_ = TWBinaryObjects::unsignedFrom(trailer.substr(16, 8));
    table_ = TWBinaryObjects::unsignedFrom(trailer.substr(24, 8));
    const auto isSize = [](std::size_t size) { return size >= 1 && size <= 8; };
    valid_ = isSize(offsetSize_) && isSize(referenceSize_) && table_ <= end && count <= (end - table_) / offsetSize_
        && count <= UINT32_MAX;
    count_ = valid_ ? static_cast<Number>(count) : 0;
}

std::optional<TWBinaryObjects::Object> TWBinaryObjects::at(std::uint64_t number) const
{
    if (number >= count_)
        return std::nullopt;
    const std::uint64_t offset
        = TWBinaryObjects::unsignedFrom(bytes_.substr(table_ + number * offsetSize_, offsetSize_));
    if (offset < HeaderSize || offset >= table_)
        return std::nullopt;
    std::string_view rest = bytes_.substr(offset + 1, table_ - offset - 1);
    const auto marker = static_cast<unsigned char>(bytes_[offset]);
    Object object;
    object.type = static_cast<Type>(marker >> 4);
    object.count = marker & 0xf;
    const bool hasCount = object.type >= Data && object.type != UID;
    if (hasCount && object.count == 0xf && !takeLongCount(rest, object.count))
        return std::nullopt;
    const auto length = contentLength(object);
    if (!length || *length > rest.size())
        return std::nullopt;
    object.content = rest.substr(0, *length);
    const std::size_t end = static_cast<std::size_t>(rest.data() - bytes_.data()) + *length;
    object.bytes = bytes_.substr(offset, end - offset);
    return object;
}

std::optional<std::uint64_t> TWBinaryObjects::contentLength(const Object& object) const
{
    switch (object.type) {
    case Simple:
        return 0;
    case Integer:
    case Real:
    case Date:
        return 1u << object.count;
    case Data:
    case ASCII:
        return object.count;
    case UTF16:
        return 2 * object.count;
    case UID:
        return object.count + 1;
    case Array:
    case OrderedSet:
    case Set:
        return object.count * referenceSize_;
    case Dictionary:
        return 2 * object.count * referenceSize_;
    }
    return std::nullopt;
}

std::uint64_t TWBinaryObjects::reference(const Object& container, std::size_t place) const
{
    return TWBinaryObjects::unsignedFrom(container.content.substr(place * referenceSize_, referenceSize_));
}

std::uint64_t TWBinaryObjects::unsignedFrom(std::string_view bytes)
{
    std::uint64_t number = 0;
    for (const char byte : bytes)
        number = number << 8 | static_cast<unsigned char>(byte);
    return number;
}

std::optional<std::string> TWBinaryObjects::text(const Object& object)
{
    if (object.type == ASCII && TWUnicode::isASCII(object.content))
        return std::string(object.content);
    std::string text;
    if (object.type != UTF16 || !TWUnicode::lengthAsUTF8(object.content))
        return std::nullopt;
    TWUnicode::appendUTF8FromUTF16(object.content, text);
    return text;
}
