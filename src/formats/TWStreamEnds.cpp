#include "formats/TWStreamEnds.h"

#include <algorithm>

void TWStreamEnds::append(std::string_view bytes)
{
    length_ += bytes.size();
    if (length_ == first_.size() + bytes.size()) { // nothing has been left out so far
        const auto part = bytes.substr(0, LongestEnd - first_.size());
        first_.append(part);
        bytes.remove_prefix(part.size());
    }
    last_.append(bytes.substr(bytes.size() - std::min(bytes.size(), LongestEnd)));
    if (last_.size() > 2 * LongestEnd)
        last_.erase(0, last_.size() - LongestEnd);
}

void TWStreamEnds::skip(std::uint64_t count)
{
    if (count > 0)
        last_.clear();
    length_ += count;
}

void TWStreamEnds::dropLast()
{
    last_.clear();
}

std::string_view TWStreamEnds::last() const
{
    return std::string_view(last_).substr(last_.size() - std::min(last_.size(), LongestEnd));
}
