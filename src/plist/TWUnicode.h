#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// The two encodings of Unicode text. Strict: no overlong forms, no surrogates in UTF-8, nothing above
// U+10FFFF. Any thread.
namespace TWUnicode {

inline constexpr char32_t Invalid = 0xffffffff;

bool isASCII(std::string_view bytes);

// Takes one character off the front of a text that is not empty. If the front is not UTF-8, takes nothing and returns
// Invalid.
char32_t takeUTF8(std::string_view& text);

// The same for big-endian UTF-16 with an even number of bytes. For an unpaired surrogate, takes it and returns Invalid.
char32_t takeUTF16(std::string_view& bytes);

void appendUTF8(char32_t character, std::string& text);

// The length in UTF-8, in bytes, of big-endian UTF-16; nothing if there is an unpaired surrogate. The number of bytes
// must be even.
std::optional<std::size_t> lengthAsUTF8(std::string_view bytes);

// Appends big-endian UTF-16 that lengthAsUTF8() has accepted.
void appendUTF8FromUTF16(std::string_view bytes, std::string& text);

void appendUTF16(char32_t character, std::string& bytes);

}
