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

// Reads and writes property lists in memory, XML and binary. Any thread. Reading takes bounded time and memory whatever
// the bytes are. What cannot be represented exactly is refused: integers beyond 64 bits with sign, UIDs, sets, null,
// unpaired surrogates, stray text between elements, entities that the document declares. If a dictionary has a key
// twice, the last value wins and takes the place of the first.
namespace TWPropertyList {

// These limits apply to reading and to writing, so whatever is written can be read back.

// Containers nested deeper than this are refused, because other code walks values recursively.
inline constexpr int MaximumDepth = 512;

// A longer file is refused.
inline constexpr std::size_t MaximumBytes = 64'000'000;

// In bytes. A list whose values would take more memory is refused; see TWPropertyListBudget. The limit of the length is
// not enough, because a file of tiny values takes many times its length in memory.
inline constexpr std::size_t MaximumMemory = 100'000'000;

// Recognises the format by the first bytes. TWPropertyListReader reads a file that arrives in pieces.
TWPropertyListResult read(std::string_view bytes);

// Returns nothing if the list exceeds a limit or the format cannot hold it: a string or key that is not valid UTF-8, or
// a date that is not a number. XML also cannot hold control characters other than tab, newline and return, U+FFFE,
// U+FFFF, dates outside the years 0 to 9999 and dates with fractions of a second.
std::optional<std::string> write(const TWValue&, TWPropertyListFormat);

// Writes XML or, if XML cannot hold the value exactly, binary. If neither can, returns nothing and sets the problem to
// one short English clause.
std::optional<std::string> write(const TWValue&, std::string& problem);

}
