#include "support/TWBase64.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

enum : unsigned char { Padding = 64, Blank = 65, Wrong = 66 };

constexpr std::array<unsigned char, 256> meanings()
{
    std::array<unsigned char, 256> result{};
    result.fill(Wrong);
    for (std::size_t i = 0; i < Alphabet.size(); i++)
        result[static_cast<unsigned char>(Alphabet[i])] = static_cast<unsigned char>(i);
    result['='] = Padding;
    for (const unsigned char blank : { ' ', '\t', '\r', '\n' })
        result[blank] = Blank;
    return result;
}

constexpr std::array<unsigned char, 256> Meanings = meanings();

unsigned char meaning(char character)
{
    return Meanings[static_cast<unsigned char>(character)];
}

}

void TWBase64::append(std::string_view bytes, std::string& text)
{
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const auto byteAt
            = [&](std::size_t at) { return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0u; };
        const unsigned group = byteAt(i) << 16 | byteAt(i + 1) << 8 | byteAt(i + 2);
        text += Alphabet[group >> 18];
        text += Alphabet[group >> 12 & 63];
        text += i + 1 < bytes.size() ? Alphabet[group >> 6 & 63] : '=';
        text += i + 2 < bytes.size() ? Alphabet[group & 63] : '=';
    }
}

std::optional<std::string> TWBase64::decode(std::string_view text)
{
    std::string bytes;
    // Counted first, so that the result's memory can be reserved exactly.
    const auto blanks = std::count_if(text.begin(), text.end(), [](char each) { return meaning(each) == Blank; });
    bytes.reserve((text.size() - static_cast<std::size_t>(blanks)) / 4 * 3);
    unsigned group = 0;
    int digits = 0;
    int padding = 0;
    for (const char character : text) {
        const unsigned char digit = meaning(character);
        if (digit == Blank)
            continue;
        padding += digit == Padding;
        if (digit == Wrong || (padding && digit != Padding))
            return std::nullopt;
        group = group << 6 | (digit & 0x3fu);
        digits = (digits + 1) % 4;
        if (digits == 0)
            bytes.append({ static_cast<char>(group >> 16), static_cast<char>(group >> 8), static_cast<char>(group) });
    }
    if (digits != 0 || padding > 2)
        return std::nullopt;
    bytes.erase(bytes.end() - padding, bytes.end());
    return bytes;
}
