#include "formats/TWByteText.h"

#include "plist/TWUnicode.h"
#include "support/TWText.h"

#include <algorithm>
#include <cstdio>

namespace {

using Encoding = TWByteText::Encoding;

constexpr std::string_view BigEndianMark = "\xFE\xFF";
constexpr std::string_view LittleEndianMark = "\xFF\xFE";
constexpr std::string_view UTF8Mark = "\xEF\xBB\xBF";
constexpr std::string_view Replacement = "\xEF\xBF\xBD";

constexpr std::size_t OneControlInBytes = 10; // a text has at most so many
constexpr std::size_t LongRun = 16; // of NUL bytes
constexpr std::size_t BytesPerLine = 16;
constexpr std::size_t TabWidth = 8; // in characters; laying out many tabs in a line takes long

constexpr auto ManyNULs = "<%@ NUL bytes>";

unsigned char value(char byte)
{
    return static_cast<unsigned char>(byte);
}

// Counts what tells text from other data.
struct Census {
    std::size_t bytes = 0;
    std::size_t controls = 0; // characters that no text uses
    std::size_t invalid = 0; // bytes that are not UTF-8
    std::size_t valid = 0; // bytes of UTF-8 that are not ASCII

    void add(std::string_view counted)
    {
        while (!counted.empty()) {
            const unsigned char first = value(counted[0]);
            const auto before = counted.size();
            const auto character = TWUnicode::takeUTF8(counted);
            if (character == TWUnicode::Invalid)
                counted.remove_prefix(1);
            const auto length = before - counted.size();
            bytes += length;
            (character == TWUnicode::Invalid ? invalid : valid) += first >= 0x80 ? length : 0;
            controls += isControl(first) || (character == TWUnicode::Invalid && first < 0xA0);
            // A log whose beginning was cut off while a program wrote to it begins with any number of these.
            if (first == 0)
                counted.remove_prefix(std::min(counted.find_first_not_of('\0'), counted.size()));
        }
    }

    // Backspaces and escape sequences do occur in logs.
    static bool isControl(unsigned char byte)
    {
        return (byte < 0x20 && (byte < '\b' || byte > '\r') && byte != 0x1B) || byte == 0x7F;
    }
};

bool isUTF16(Encoding encoding)
{
    return encoding == Encoding::UTF16BigEndian || encoding == Encoding::UTF16LittleEndian;
}

// A surrogate is half a character.
bool isSurrogate(std::string_view unit, Encoding encoding, unsigned char kind)
{
    const char high = encoding == Encoding::UTF16BigEndian ? unit[0] : unit[1];
    return (value(high) & 0xFC) == kind;
}

constexpr unsigned char FirstHalf = 0xD8;
constexpr unsigned char SecondHalf = 0xDC;

std::string fromUTF16(std::string_view bytes, Encoding encoding, bool& hasReplaced)
{
    std::string swapped(bytes.substr(0, bytes.size() / 2 * 2));
    const bool hasHalfUnit = swapped.size() != bytes.size();
    hasReplaced = hasHalfUnit;
    for (std::size_t at = 0; encoding == Encoding::UTF16LittleEndian && at < swapped.size(); at += 2)
        std::swap(swapped[at], swapped[at + 1]);
    std::string_view rest = swapped;
    if (rest.starts_with(BigEndianMark))
        rest.remove_prefix(BigEndianMark.size());
    std::string text;
    while (!rest.empty()) {
        const auto character = TWUnicode::takeUTF16(rest);
        hasReplaced = hasReplaced || character == TWUnicode::Invalid;
        if (character == TWUnicode::Invalid)
            text += Replacement;
        else
            TWUnicode::appendUTF8(character, text);
    }
    if (hasHalfUnit)
        text += Replacement;
    return text;
}

std::string toUTF8(std::string_view bytes, Encoding encoding, bool& hasReplaced)
{
    if (isUTF16(encoding))
        return fromUTF16(bytes, encoding, hasReplaced);
    if (encoding == Encoding::UTF8) {
        hasReplaced = !TWText::isValidUTF8(bytes);
        return std::string(bytes.substr(bytes.starts_with(UTF8Mark) ? UTF8Mark.size() : 0));
    }
    std::string text;
    for (const char byte : bytes)
        TWUnicode::appendUTF8(value(byte), text);
    return text;
}

// Makes lines end with a line feed only, and long runs of NUL bytes short.
std::string tidied(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const auto length = std::min({ text.find('\0'), text.find("\r\n"), text.size() });
        result.append(text.substr(0, length));
        text.remove_prefix(length);
        const auto run = std::min(text.find_first_not_of('\0'), text.size());
        if (run > LongRun)
            result += TWText::fill(ManyNULs, { TWText::number(run) });
        else
            result.append(text.substr(0, run));
        text.remove_prefix(run);
        if (text.starts_with("\r\n"))
            text.remove_prefix(1);
    }
    return result;
}

std::string broken(std::string_view text, bool& hasBroken)
{
    std::string result;
    result.reserve(text.size());
    std::size_t inLine = 0;
    for (const char byte : text) {
        const bool begins = (value(byte) & 0xC0) != 0x80;
        inLine = byte == '\n' ? 0 : inLine + (byte == '\t' ? TabWidth : begins);
        if (inLine > TWByteText::LongestLine) {
            result += '\n';
            inLine = 1;
            hasBroken = true;
        }
        result += byte;
    }
    return result;
}

}

Encoding TWByteText::encodingOf(std::string_view first, std::string_view last)
{
    if (first.starts_with(BigEndianMark))
        return Encoding::UTF16BigEndian;
    if (first.starts_with(LittleEndianMark))
        return Encoding::UTF16LittleEndian;
    Census census;
    census.add(withoutCutEnd(first, Encoding::UTF8));
    census.add(withoutCutEnd(withoutCutBeginning(last, Encoding::UTF8, 1), Encoding::UTF8));
    if (census.controls > census.bytes / OneControlInBytes)
        return Encoding::None;
    return census.valid >= census.invalid ? Encoding::UTF8 : Encoding::Latin1;
}

std::string_view TWByteText::withoutCutBeginning(std::string_view bytes, Encoding encoding, std::uint64_t place)
{
    std::size_t cut = 0;
    if (encoding == Encoding::None)
        cut = static_cast<std::size_t>((BytesPerLine - place % BytesPerLine) % BytesPerLine);
    if (encoding == Encoding::UTF8)
        while (cut < 3 && cut < bytes.size() && (value(bytes[cut]) & 0xC0) == 0x80)
            ++cut;
    if (isUTF16(encoding)) {
        cut = static_cast<std::size_t>(place % 2);
        if (bytes.size() >= cut + 2 && isSurrogate(bytes.substr(cut), encoding, SecondHalf))
            cut += 2;
    }
    return bytes.substr(std::min(cut, bytes.size()));
}

std::string_view TWByteText::withoutCutEnd(std::string_view bytes, Encoding encoding)
{
    if (isUTF16(encoding)) {
        bytes.remove_suffix(bytes.size() % 2);
        if (bytes.size() >= 2 && isSurrogate(bytes.substr(bytes.size() - 2), encoding, FirstHalf))
            bytes.remove_suffix(2);
    }
    if (encoding != Encoding::UTF8)
        return bytes;
    for (std::size_t length = 1; length <= std::min(std::size_t{ 3 }, bytes.size()); ++length) {
        const auto byte = value(bytes[bytes.size() - length]);
        const std::size_t whole = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        if (whole > length)
            return bytes.substr(0, bytes.size() - length);
        if ((byte & 0xC0) != 0x80)
            break;
    }
    return bytes;
}

TWByteText::Lines TWByteText::lines(std::string_view bytes, Encoding encoding)
{
    Lines lines;
    const auto text = TWText::manyLines(tidied(toUTF8(bytes, encoding, lines.hasReplaced)));
    lines.text = broken(text, lines.hasBroken);
    return lines;
}

std::string TWByteText::hexLines(std::string_view bytes, std::uint64_t place)
{
    std::string text;
    for (; !bytes.empty(); place += BytesPerLine) {
        const auto line = bytes.substr(0, BytesPerLine);
        bytes.remove_prefix(line.size());
        char part[24];
        std::snprintf(part, sizeof part, "%08llx ", static_cast<unsigned long long>(place));
        text += part;
        std::string characters;
        for (std::size_t column = 0; column < BytesPerLine; ++column) {
            const auto byte = column < line.size() ? value(line[column]) : 0;
            std::snprintf(part, sizeof part, column < line.size() ? " %02x" : "   ", byte);
            text.append(column == BytesPerLine / 2 ? " " : "").append(part);
            if (column < line.size())
                characters += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
        }
        text.append("  ").append(characters).append("\n");
    }
    return text;
}
