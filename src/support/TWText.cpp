#include "support/TWText.h"

#include <cstdint>
#include <cstdio>

// The library's macros narrow integers.
#pragma GCC diagnostic ignored "-Wconversion"
#include <unicode/utf8.h>

namespace {

constexpr std::string_view Replacement = "\xEF\xBF\xBD";

// Calls valid with each run of valid UTF-8 and invalid once for each byte that is not.
template <typename Valid, typename Invalid>
void walkUTF8(std::string_view bytes, Valid valid, Invalid invalid)
{
    const auto length = static_cast<std::int32_t>(bytes.size());
    std::int32_t runStart = 0;
    std::int32_t index = 0;
    while (index < length) {
        const std::int32_t start = index;
        UChar32 character;
        U8_NEXT(bytes.data(), index, length, character);
        if (character >= 0)
            continue;
        if (start > runStart)
            valid(bytes.substr(runStart, start - runStart));
        for (std::int32_t bad = start; bad < index; ++bad)
            invalid();
        runStart = index;
    }
    if (length > runStart)
        valid(bytes.substr(runStart));
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

std::string validUTF8(std::string_view bytes)
{
    std::string result;
    result.reserve(bytes.size());
    walkUTF8(
        bytes, [&](std::string_view run) { result.append(run); }, [&] { result.append(Replacement); });
    return result;
}

bool isValidUTF8(std::string_view bytes)
{
    bool valid = true;
    walkUTF8(
        bytes, [](std::string_view) {}, [&] { valid = false; });
    return valid;
}

std::string oneLine(std::string_view bytes)
{
    std::string result;
    for (const char byte : validUTF8(bytes)) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x20)
            result.append("\xE2\x90").push_back(static_cast<char>(0x80 + code)); // U+2400 and following
        else if (code == 0x7F)
            result.append("\xE2\x90\xA1"); // U+2421
        else
            result.push_back(byte);
    }
    return result;
}

std::string count(unsigned long long number, std::string_view singular, std::string_view plural)
{
    std::string digits = std::to_string(number);
    for (auto place = static_cast<std::ptrdiff_t>(digits.size()) - 3; place > 0; place -= 3)
        digits.insert(static_cast<std::size_t>(place), ",");
    return digits.append(" ").append(number == 1 ? singular : plural);
}

std::string size(unsigned long long bytes)
{
    if (bytes < 1000)
        return count(bytes, "byte", "bytes");
    double value = static_cast<double>(bytes);
    const char* unit = "";
    for (const char* next : { "kB", "MB", "GB", "TB", "PB" }) {
        // 999.95 would be shown as 1000.0 of the smaller unit.
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
