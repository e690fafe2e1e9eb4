#pragma once

#include <cstddef>
#include <string_view>

// Helpers for the scanners of text formats. Only spaces and tabs are blanks.
namespace TWFormatText {

// Where the text begins: after a byte order mark, if there is one.
inline std::size_t start(std::string_view bytes)
{
    return bytes.starts_with("\xef\xbb\xbf") ? 3 : 0;
}

inline bool isBlank(char byte)
{
    return byte == ' ' || byte == '\t';
}

inline bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t") == text.npos;
}

inline std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}
