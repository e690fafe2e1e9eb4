#include "support/TWText.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

// The library's macros narrow integers.
#pragma GCC diagnostic ignored "-Wconversion"
#include <unicode/utf8.h>

namespace {

constexpr std::string_view Replacement = "\xEF\xBF\xBD";

// True for characters that control a terminal, break a line or change the display order of the text around them.
bool isHarmful(UChar32 character)
{
    return character < 0x20 || (character >= 0x7F && character <= 0x9F) // control characters
        || character == 0x061C || character == 0x200E || character == 0x200F // direction marks
        || (character >= 0x2028 && character <= 0x202E) // line and paragraph separator, embeddings, overrides
        || (character >= 0x2066 && character <= 0x2069) // isolates
        || character == 0xFEFF; // byte order mark, which nobody could see
}

bool isHarmfulInLines(UChar32 character)
{
    return character != '\n' && character != '\t' && isHarmful(character);
}

bool isNeverHarmful(UChar32)
{
    return false;
}

std::string numbered(const char* format, UChar32 character)
{
    char text[16];
    std::snprintf(text, sizeof text, format, static_cast<unsigned>(character));
    return text;
}

std::string pictured(UChar32 character)
{
    if (character < 0x20)
        return std::string("\xE2\x90").append(1, static_cast<char>(0x80 + character)); // U+2400 and following
    if (character == 0x7F)
        return "\xE2\x90\xA1"; // U+2421
    return numbered("<U+%04X>", character);
}

std::string escapedForJSON(UChar32 character)
{
    return numbered("\\u%04x", character);
}

// Returns a copy in which each byte that is not part of a valid sequence becomes U+FFFD and each character for which
// replaces is true becomes what shown returns. Copies runs of all other characters at once.
template <typename Replaces, typename Shown>
std::string replaced(std::string_view bytes, Replaces replaces, Shown shown)
{
    std::string result;
    result.reserve(bytes.size());
    const auto length = static_cast<std::int32_t>(bytes.size());
    std::int32_t runStart = 0;
    for (std::int32_t index = 0; index < length;) {
        const std::int32_t start = index;
        UChar32 character;
        U8_NEXT(bytes, index, length, character);
        if (character >= 0 && !replaces(character))
            continue;
        result.append(bytes.substr(runStart, start - runStart));
        runStart = index;
        if (character >= 0)
            result.append(shown(character));
        for (std::int32_t bad = start; character < 0 && bad < index; ++bad)
            result.append(Replacement);
    }
    return result.append(bytes.substr(runStart));
}

}

namespace TWText {

std::string fill(std::string_view format, std::initializer_list<std::string_view> values)
{
    std::string result;
    for (const auto value : values) {
        const auto place = format.find("%@");
        if (place == std::string_view::npos)
            break;
        result.append(format.substr(0, place)).append(value);
        format.remove_prefix(place + 2);
    }
    return result.append(format);
}

std::vector<std::string> split(std::string_view text, char separator)
{
    std::vector<std::string> parts;
    while (!text.empty()) {
        const auto part = text.substr(0, text.find(separator));
        parts.emplace_back(part);
        text.remove_prefix(std::min(part.size() + 1, text.size()));
    }
    return parts;
}

std::string join(const std::vector<std::string>& parts, std::string_view separator)
{
    std::string text;
    for (const auto& part : parts) {
        if (!text.empty() && !part.empty())
            text += separator;
        text += part;
    }
    return text;
}

std::string validUTF8(std::string_view bytes)
{
    return replaced(bytes, isNeverHarmful, pictured);
}

bool isValidUTF8(std::string_view bytes)
{
    const auto length = static_cast<std::int32_t>(bytes.size());
    for (std::int32_t index = 0; index < length;) {
        UChar32 character;
        U8_NEXT(bytes, index, length, character);
        if (character < 0)
            return false;
    }
    return true;
}

std::string oneLine(std::string_view bytes)
{
    return replaced(bytes, isHarmful, pictured);
}

std::string manyLines(std::string_view bytes)
{
    return replaced(bytes, isHarmfulInLines, pictured);
}

std::string harmlessJSON(std::string_view json)
{
    return replaced(json, isHarmful, escapedForJSON);
}

std::string number(unsigned long long number)
{
    const std::string digits = std::to_string(number);
    std::string text;
    for (std::size_t place = 0; place < digits.size(); ++place) {
        if (place > 0 && (digits.size() - place) % 3 == 0)
            text += ',';
        text += digits[place];
    }
    return text;
}

std::string count(unsigned long long count, std::string_view singular, std::string_view plural)
{
    return number(count).append(" ").append(count == 1 ? singular : plural);
}

std::string localTime(std::time_t time, const char* format)
{
    std::tm parts{};
    char text[64] = "";
    if (localtime_r(&time, &parts))
        std::strftime(text, sizeof text, format, &parts);
    return text;
}

std::string utcTime(std::time_t time)
{
    std::tm parts{};
    char text[64] = "";
    if (gmtime_r(&time, &parts))
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts);
    return text;
}

std::string size(unsigned long long bytes)
{
    if (bytes < 1000)
        return count(bytes, "byte", "bytes");
    auto value = static_cast<double>(bytes);
    const char* unit = "";
    for (const char* next : { "kB", "MB", "GB", "TB", "PB" }) {
        // 999.95 would be shown as "1000.0" of the smaller unit.
        if (*unit && value < 999.95)
            break;
        value /= 1000;
        unit = next;
    }
    char text[32];
    std::snprintf(text, sizeof text, value < 99.95 ? "%.1f %s" : "%.0f %s", value, unit);
    return text;
}

}
