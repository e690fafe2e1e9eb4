#pragma once

#include "plist/TWValue.h"

#include <optional>
#include <string>
#include <string_view>

enum class TWPropertyListFormat { XML, Binary };

struct TWPropertyListResult {
    std::optional<TWValue> value; // nothing when the bytes could not be read
    TWPropertyListFormat format = TWPropertyListFormat::XML;
    std::string problem; // when there is no value: one short English clause, such as "line 3: unknown element <foo>"
};

// Reads and writes property lists, XML and binary. Bytes in, bytes out; no file is touched. Any thread.
// Reading takes bounded time and memory whatever the bytes are. What cannot be kept exactly is refused rather than
// guessed: integers beyond 64 bits with sign, UIDs, sets, null, unpaired surrogates, stray text between elements,
// entities of an own document type. Of a key that is there twice in one dictionary the last value wins, at the place of
// the first.
namespace TWPropertyList {

// Containers nested deeper than this are refused, on reading and on writing: values are walked recursively elsewhere.
inline constexpr int MaximumDepth = 512;

// A longer file is refused, on reading and on writing.
inline constexpr std::size_t MaximumBytes = 64 * 1024 * 1024;

// Tells the format by the first bytes.
TWPropertyListResult read(std::string_view bytes);

// Nothing when the value could not be read back: nested too deep, too long, a string or key that is not valid UTF-8, or
// a date that is no number. XML has fewer characters and dates: control characters but tab, newline and return are
// refused, U+FFFE and U+FFFF too, and dates outside the years 0 to 9999. XML keeps the whole seconds of a date only.
std::optional<std::string> write(const TWValue&, TWPropertyListFormat);

}
