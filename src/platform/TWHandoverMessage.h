#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The wire format of a handover: a length of four bytes, big-endian, then the fields, each preceded by its own length.
// Any thread.
namespace TWHandoverMessage {

using Fields = std::vector<std::string>;

// In bytes, without the leading length.
inline constexpr std::size_t LongestMessage = 1 << 20;

// Returns nothing if the message would be too long.
std::optional<std::string> pack(const Fields&);

enum class State { Incomplete, Complete, Broken };

// Parses what has arrived so far; received starts at the beginning of the message. Sets the fields only if the message
// is complete.
State unpack(std::string_view received, Fields&);

}
