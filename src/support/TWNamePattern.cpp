#include "support/TWNamePattern.h"

#include <algorithm>

namespace {

// The length of the bracket expression at the beginning of the pattern, or 0 if there is none.
std::size_t bracketLength(std::string_view pattern)
{
    if (!pattern.starts_with('['))
        return 0;
    const std::size_t first = pattern.starts_with("[!") ? 2 : 1;
    const auto end = pattern.find(']', first + 1);
    return end == std::string_view::npos ? 0 : end + 1;
}

// The members are what stands between the brackets, without "!".
bool isMember(std::string_view members, unsigned char byte)
{
    while (!members.empty()) {
        const bool isRange = members.size() >= 3 && members[1] == '-';
        const auto low = static_cast<unsigned char>(members.front());
        const auto high = isRange ? static_cast<unsigned char>(members[2]) : low;
        if (low <= byte && byte <= high)
            return true;
        members.remove_prefix(isRange ? 3 : 1);
    }
    return false;
}

bool isDoubtful(std::string_view members)
{
    const auto isHigh = [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; };
    if (std::any_of(members.begin(), members.end(), isHigh))
        return true;
    while (!members.empty()) {
        const bool isRange = members.size() >= 3 && members[1] == '-';
        if (isRange && members[2] < members[0])
            return true;
        members.remove_prefix(isRange ? 3 : 1);
    }
    return false;
}

// Returns the length of what stands for one byte at the beginning of the pattern, or 0 if it does not stand for this
// byte.
std::size_t matchedLength(std::string_view pattern, char byte)
{
    if (const auto length = bracketLength(pattern); length > 0) {
        const bool others = pattern[1] == '!';
        const std::size_t first = others ? 2 : 1;
        const auto members = pattern.substr(first, length - 1 - first);
        return isMember(members, static_cast<unsigned char>(byte)) != others ? length : 0;
    }
    return pattern.starts_with('?') || pattern.starts_with(byte) ? 1 : 0;
}

}

// Tries the shortest text for each "*" first. Only the latest "*" ever needs to be tried again with a longer one, so
// the time is at most the product of both lengths.
bool TWNamePattern::matches(std::string_view name) const
{
    std::string_view pattern = text_;
    std::string_view afterStar;
    std::string_view starName; // what is left of the name for the pattern after the latest "*"
    bool starSeen = false;
    while (!name.empty()) {
        if (pattern.starts_with('*')) {
            pattern.remove_prefix(1);
            starSeen = true;
            afterStar = pattern;
            starName = name;
        } else if (const auto length = matchedLength(pattern, name.front()); length > 0) {
            pattern.remove_prefix(length);
            name.remove_prefix(1);
        } else if (starSeen) {
            starName.remove_prefix(1);
            name = starName;
            pattern = afterStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*') == std::string_view::npos;
}

bool TWNamePattern::hasDoubtfulSet() const
{
    std::string_view rest = text_;
    while (!rest.empty()) {
        const auto length = bracketLength(rest);
        if (length > 0) {
            const std::size_t first = rest[1] == '!' ? 2 : 1;
            if (isDoubtful(rest.substr(first, length - 1 - first)))
                return true;
        }
        rest.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return false;
}
