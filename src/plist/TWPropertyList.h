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
// Reading takes bounded time and memory whatever the bytes are.
namespace TWPropertyList {

// Containers nested deeper than this are refused, on reading and on writing: values are walked recursively elsewhere.
inline constexpr int MaximumDepth = 512;

// Tells the format by the first bytes.
TWPropertyListResult read(std::string_view bytes);

// Nothing when the value cannot be written: nested too deep, or a string that is not valid UTF-8.
std::optional<std::string> write(const TWValue&, TWPropertyListFormat);

}
