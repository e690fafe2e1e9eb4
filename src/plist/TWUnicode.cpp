#include "plist/TWUnicode.h"

bool TWUnicode::isASCII(std::string_view bytes)
{
    unsigned char all = 0;
    for (const char byte : bytes)
        all |= static_cast<unsigned char>(byte);
    return all < 0x80;
}

char32_t TWUnicode::takeUTF8(std::string_view& text)
{
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) {
        text.remove_prefix(1);
        return first;
    }
    const std::size_t length = first < 0xc2 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf5 ? 4 : 0;
    if (!length || text.size() < length)
        return Invalid;
    char32_t character = first & (0x7fu >> length);
    for (std::size_t i = 1; i < length; i++) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if ((byte & 0xc0) != 0x80)
            return Invalid;
        character = character << 6 | (byte & 0x3f);
    }
    const bool overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    if (overlong || (character >= 0xd800 && character < 0xe000) || character > 0x10ffff)
        return Invalid;
    text.remove_prefix(length);
    return character;
}

void TWUnicode::appendUTF8(char32_t character, std::string& text)
{
    if (character < 0x80) {
        text += static_cast<char>(character);
        return;
    }
    const int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    text += static_cast<char>(0xff00u >> (following + 1) | character >> 6 * following);
    for (int i = following - 1; i >= 0; i--)
        text += static_cast<char>(0x80 | (character >> 6 * i & 0x3f));
}

char32_t TWUnicode::takeUTF16(std::string_view& bytes)
{
    const auto takeUnit = [&] {
        const auto high = static_cast<unsigned char>(bytes[0]);
        const auto low = static_cast<unsigned char>(bytes[1]);
        bytes.remove_prefix(2);
        return static_cast<char32_t>(high << 8 | low);
    };
    const char32_t unit = takeUnit();
    if (unit < 0xd800 || unit >= 0xe000)
        return unit;
    if (unit >= 0xdc00 || bytes.empty())
        return TWUnicode::Invalid;
    const char32_t low = takeUnit();
    if (low < 0xdc00 || low >= 0xe000)
        return TWUnicode::Invalid;
    return 0x10000 + ((unit - 0xd800) << 10) + (low - 0xdc00);
}

std::optional<std::size_t> TWUnicode::lengthAsUTF8(std::string_view bytes)
{
    std::size_t length = 0;
    while (!bytes.empty()) {
        const char32_t character = takeUTF16(bytes);
        if (character == Invalid)
            return std::nullopt;
        length += character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
    }
    return length;
}

void TWUnicode::appendUTF8FromUTF16(std::string_view bytes, std::string& text)
{
    while (!bytes.empty())
        appendUTF8(takeUTF16(bytes), text);
}

void TWUnicode::appendUTF16(char32_t character, std::string& bytes)
{
    if (character >= 0x10000) {
        appendUTF16(0xd800 + ((character - 0x10000) >> 10), bytes);
        character = 0xdc00 + ((character - 0x10000) & 0x3ff);
    }
    bytes += static_cast<char>(character >> 8);
    bytes += static_cast<char>(character);
}
