#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Shows the bytes of any file as lines that can do no harm: valid UTF-8 with no control characters but line feeds and
// tabs, nothing that changes the direction of the text around it, and no line of more than LongestLine characters. Any
// thread.
namespace TWByteText {

inline constexpr std::size_t LongestLine = 1000;

// None stands for bytes that are no text.
enum class Encoding { None, UTF8, UTF16BigEndian, UTF16LittleEndian, Latin1 };

// Guesses from the first and the last part of a file.
Encoding encodingOf(std::string_view first, std::string_view last);

// For bytes that were cut out of a file: removes what is left of a character that was cut, or of a line of hexLines().
std::string_view withoutCutBeginning(std::string_view bytes, Encoding, std::uint64_t place);
std::string_view withoutCutEnd(std::string_view bytes, Encoding);

struct Lines {
    std::string text;
    bool hasBroken = false; // lines that were too long
    bool hasReplaced = false; // bytes that are not valid in that encoding
};

// The encoding must not be None. A long run of NUL bytes is shown as its length.
Lines lines(std::string_view bytes, Encoding);

// Sixteen bytes a line: the place in the file, the bytes in hexadecimal, and those that are printable ASCII characters.
std::string hexLines(std::string_view bytes, std::uint64_t place);

}
