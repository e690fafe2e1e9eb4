#pragma once

#include "plist/TWValue.h"

#include <optional>
#include <string>
#include <string_view>

enum class TWPropertyListFormat { XML, Binary };

struct TWPropertyListResult {
    std::optional<TWValue> value; // nothing if the bytes could not be read
    TWPropertyListFormat format = TWPropertyListFormat::XML;
    std::string problem; // if there is no value: one short English clause, such as "line 3: unknown element <foo>"
};

// Reads and writes property lists, XML and binary. Bytes in, bytes out; no file is touched. Any thread.
// Reading takes bounded time and memory whatever the bytes are. What cannot be kept exactly is refused rather than
// guessed: integers beyond 64 bits with sign, UIDs, sets, null, unpaired surrogates, stray text between elements,
// entities that the document declares. If a dictionary has a key twice, the last value wins and takes the place of the
// first.
namespace TWPropertyList {

// The bounds hold for reading and for writing alike: whatever is written can be read back.

// Containers nested deeper than this are refused: values are walked recursively elsewhere.
inline constexpr int MaximumDepth = 512;

// A longer file is refused.
inline constexpr std::size_t MaximumBytes = 64'000'000;

// A list whose values would take more memory is refused; see TWPropertyListBudget. A file of tiny values takes many
// times its length, so the length alone bounds nothing.
inline constexpr std::size_t MaximumMemory = 100'000'000;

// Tells the format by the first bytes. For a file that comes in pieces there is TWPropertyListReader.
TWPropertyListResult read(std::string_view bytes);

// Nothing if the list is beyond one of the bounds, or if the format cannot hold it: a string or key that is not valid
// UTF-8, or a date that is not a number. XML has fewer characters and dates: control characters but tab, newline and
// return are refused, U+FFFE and U+FFFF too, dates outside the years 0 to 9999 and fractions of a second.
std::optional<std::string> write(const TWValue&, TWPropertyListFormat);

// As XML or, if XML cannot hold the value exactly, as binary. If neither can, the problem is one short English clause.
std::optional<std::string> write(const TWValue&, std::string& problem);

}
