#pragma once

#include "plist/TWValue.h"

#include <optional>
#include <string>
#include <string_view>

// Writes one XML property list, laid out as Apple's tools do: one element per line, tabs, Base64 lines that end at
// column 76. Any thread.
class TWXMLPropertyListWriter final {
public:
    // The value must be within the TWPropertyListBudget. Returns nothing and sets the problem if XML cannot hold the
    // value or the file would be too long.
    std::optional<std::string> write(const TWValue& value, std::string_view& problem);

private:
    bool writeValue(const TWValue& value);
    bool writeArray(const TWValue::Array& items);
    bool writeDictionary(const TWDictionary& dictionary);
    bool writeText(std::string_view element, std::string_view text);
    bool writeDate(TWDate date);
    void writeReal(double number);
    void writeInteger(std::int64_t number);
    bool writeData(std::string_view bytes);
    void startContainer(std::string_view name, bool empty);
    void endContainer(std::string_view name, bool empty);
    bool isTooLong();
    bool fail(std::string_view problem);
    void indent() { output_.append(std::size_t(depth_), '\t'); }

    std::string output_;
    std::string_view problem_;
    int depth_ = 0;
};
