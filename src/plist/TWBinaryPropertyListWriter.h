#pragma once

#include "plist/TWBinaryObjectWriter.h"
#include "plist/TWValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Writes one binary property list. Numbers all values, with the items of a container in sequence, writes them in that
// order and then the keys. A key that many dictionaries have is written once; equal values are not merged. Any thread.
class TWBinaryPropertyListWriter final {
public:
    // The value must be within the TWPropertyListBudget. Returns nothing and sets the problem if the format cannot hold
    // the value or the file would be too long.
    std::optional<std::string> write(const TWValue& value, std::string_view& problem);

private:
    bool writeAll();
    bool fits();
    void numberAll(const TWValue& root);
    void numberChildren(const TWValue& value);
    std::uint32_t keyNumber(const std::string& key);
    bool writeObject(const TWValue& value);
    bool writeString(std::string_view text);
    void writeArray(std::size_t count);
    void writeDictionary(std::size_t count);
    bool fail(std::string_view problem);

    std::string_view problem_;
    std::vector<const TWValue*> values_;
    std::vector<std::string_view> keys_;
    std::vector<std::uint32_t> keyNumbers_; // those of all dictionaries, one after the other
    std::unordered_map<std::string_view, std::uint32_t> numberOfKey_;
    std::optional<TWBinaryObjectWriter> writer_;
    std::size_t nextChild_ = 1; // number of the first item of the next container
    std::size_t nextKey_ = 0; // index in keyNumbers_ of the next dictionary's first key
};
