#pragma once

#include "formats/TWKeyCollector.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What was found in one file of another program.
struct TWFoundEntries {
    std::string_view format; // such as "JSON"; empty if the format is unknown
    std::string problem; // if the file could not be opened: one short English clause
    std::vector<std::size_t> counts; // the number of entries for each key
};

// Finds and removes entries in the preference files of other programs. The format is recognised by the content. An
// entry is what has exactly the name of a key, at any depth: a member of a JSON object, a group or an entry of an INI
// file, an XML element, a dictionary entry of a property list; see the scanners. What is inside a removed entry is not
// searched. Keys are handled in the order of the list. If a file has an entry twice, both go.
//
// What is damaged or ambiguous is refused. Takes a time and an amount of memory that are bounded by a small multiple of
// the file's length. Any thread.
namespace TWFileFormats {

// A longer file is refused.
inline constexpr std::size_t MaximumBytes = 64'000'000;

// A file that is nested deeper is refused. Real ones have a few levels.
inline constexpr std::size_t MaximumDepth = 512;
inline constexpr std::string_view TooDeep = "it is nested more than 512 levels deep";

// True if the file, of which at least the first 16 bytes are given, is an SQLite database. Those are never held in
// memory: TWKeyValueDatabase edits them.
bool isDatabase(std::string_view beginning);

TWFoundEntries find(std::string_view bytes, const std::vector<std::string>& keys);

// Like find(). If there are entries, sets the remaining bytes to the file without them; in all formats but the binary
// property list they differ from the file only by the entries and by the lines and commas that went with them.
TWFoundEntries cut(
    std::string_view bytes, const std::vector<std::string>& keys, std::optional<std::string>& remainingBytes);

// The keys of dictionaries and lists whose names contain one of the keywords, in the order of the file, with their
// values; see TWKeyCollector. In an INI file a group is a dictionary, and a list is an entry with several items, with a
// path or an address, or with a number at the end of its name. In an XBEL file and in LibreOffice's registry each
// name comes once, with the values of all its entries. Nothing if the file cannot be read.
std::vector<TWFoundKey> findKeys(std::string_view bytes, const std::vector<std::string>& keywords);

}
