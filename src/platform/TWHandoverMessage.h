#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How a handover travels: one length of four bytes, then fields of any bytes, each behind its own length.
namespace TWHandoverMessage {

using Fields = std::vector<std::string>;

// Of a whole message, in bytes. A command line is never longer than a few of these.
inline constexpr std::size_t LongestMessage = 1 << 20;

// Nothing if the message would be too long.
std::optional<std::string> pack(const Fields&);

enum class State { Incomplete, Complete, Broken };

// Reads what has arrived so far. Costs nothing until all of it is there.
State unpack(std::string_view received, Fields&);

}
