#pragma once

#include <string_view>

// What the scanners of the formats have in common.
namespace TWFormatScanner {

// Files nested deeper than this are refused; real ones have a few levels.
inline constexpr std::size_t MaximumDepth = 512;

inline constexpr std::string_view TooDeep = "it is nested more than 512 levels deep";

}
