#pragma once

#include "formats/TWFileFormats.h"
#include "plist/TWPropertyList.h"
#include "plist_property.h"

#include <numeric>
#include <string>
#include <string_view>
#include <vector>

// Properties of cutting entries out of files that hold for any bytes. Used by the fuzz targets and by the unit tests.
namespace TWFormatsProperty {

using TWPlistProperty::require;
using Keys = std::vector<std::string>;

// Reads the keys, separated by commas, from the first line of a fuzz target's input, and leaves the file.
inline Keys takeKeys(std::string_view& input)
{
    std::string_view line = input.substr(0, input.find('\n'));
    input.remove_prefix(std::min(line.size() + 1, input.size()));
    Keys keys;
    for (std::size_t comma = line.find(','); comma != line.npos; comma = line.find(',')) {
        keys.emplace_back(line.substr(0, comma));
        line.remove_prefix(comma + 1);
    }
    keys.emplace_back(line);
    return keys;
}

// True if the bytes are others with some left out.
inline bool isSubsequence(std::string_view bytes, std::string_view others)
{
    for (const char other : others) {
        if (!bytes.empty() && bytes.front() == other)
            bytes.remove_prefix(1);
    }
    return bytes.empty();
}

inline std::size_t removeKey(const std::string& key, TWValue& value)
{
    std::size_t removed = 0;
    if (TWDictionary* dictionary = value.dictionary()) {
        removed += dictionary->remove(key);
        for (auto& entry : dictionary->entries())
            removed += removeKey(key, entry.second);
    } else if (TWValue::Array* items = value.array()) {
        for (TWValue& item : *items)
            removed += removeKey(key, item);
    }
    return removed;
}

// Compares with the removal of the keys from the values that the other reader finds.
inline void checkPropertyList(std::string_view before, std::string_view after, const Keys& keys)
{
    auto value = TWPropertyList::read(before).value;
    if (!value)
        return;
    for (const std::string& key : keys)
        removeKey(key, *value);
    require(TWPropertyList::read(after).value == *value, "exactly the entries are gone from the property list");
}

// Checks one file if it is of a format whose name ends like this. Returns what find() returned.
inline TWFoundEntries check(std::string_view bytes, const Keys& keys, std::string_view format = "")
{
    std::optional<std::string> remaining;
    const TWFoundEntries found = TWFileFormats::find(bytes, keys);
    if (!found.format.ends_with(format))
        return found;
    const TWFoundEntries cut = TWFileFormats::cut(bytes, keys, remaining);
    for (const TWFoundKey& key : TWFileFormats::findKeys(bytes, keys)) {
        const TWFoundEntries named = TWFileFormats::find(bytes, { key.key });
        require(!named.problem.empty() || named.counts[0] > 0, "a found key can be cut, or cutting it is refused");
    }
    require(found.counts == cut.counts && found.problem == cut.problem, "find() and cut() agree");
    require(found.problem.empty() == !found.counts.empty(), "there are either counts or a problem");
    const auto total = std::accumulate(cut.counts.begin(), cut.counts.end(), std::size_t(0));
    require(remaining.has_value() == (total > 0), "without entries the file stays as it is");
    if (!remaining)
        return found;
    const bool isBinary = bytes.starts_with("bplist");
    require(isBinary || remaining->size() < bytes.size(), "the file became shorter");
    require(isBinary || isSubsequence(*remaining, bytes), "nothing was added");
    std::optional<std::string> nothing;
    const TWFoundEntries again = TWFileFormats::cut(*remaining, keys, nothing);
    // What remains of an INI file may look like a JSON array, or begin with an entry called like a binary list.
    if (found.format == "INI" && again.format != "INI")
        return found;
    require(again.problem.empty() && again.format == found.format, "what remains is a file of the same format");
    require(!nothing, "the entries are gone");
    if (found.format.ends_with("property list"))
        checkPropertyList(bytes, *remaining, keys);
    return found;
}

}
