#include "deletion/TWKeepEntry.h"

#include "platform/TWPlaces.h"
#include "support/TWNamePattern.h"

namespace {

constexpr auto NoPattern = "has no name";
constexpr auto PatternWithSlash = "has a name with a \"/\"";
constexpr auto NoPath = "has no path";
constexpr auto Relative = "has a path that does not begin with \"/\" or \"~\"";
constexpr auto DoubtfulSet
    = "has a set with a range that goes backwards, or with a character that is not ASCII; \"?\" stands for each byte "
      "of such a character";
constexpr auto NotAPath = "has a byte of 0, which no path can hold";

}

std::string TWKeepEntry::mistake() const
{
    if (text.find('\0') != std::string::npos)
        return NotAPath;
    if (kind == Kind::Names) {
        if (text.empty())
            return NoPattern;
        return text.find('/') == std::string::npos ? "" : PatternWithSlash;
    }
    if (text.empty())
        return NoPath;
    return TWPlaces::isStoredPath(text) ? "" : Relative;
}

std::string TWKeepEntry::doubt() const
{
    return kind == Kind::Names && TWNamePattern(text).hasDoubtfulSet() ? DoubtfulSet : "";
}
