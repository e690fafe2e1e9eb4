#include "support/TWReportLine.h"

#include "support/TWText.h"

#include <limits>

namespace {

// Nothing for a part too far into the text, or too long.
TWTextPart part(std::size_t begin, std::size_t length)
{
    constexpr std::size_t Most = std::numeric_limits<std::uint16_t>::max();
    if (begin > Most || length > Most)
        return {};
    return { static_cast<std::uint16_t>(begin), static_cast<std::uint16_t>(length) };
}

}

TWTextPart TWTextPart::movedBy(std::size_t bytes) const
{
    return length == 0 ? TWTextPart() : part(begin + bytes, length);
}

TWReportLine TWReportLine::about(
    std::string_view format, std::initializer_list<std::string_view> values, std::size_t pathPosition)
{
    TWReportLine line(TWText::fill(format, values));
    const auto path = values.begin()[pathPosition];
    if (!path.starts_with('/'))
        return line;
    auto begin = format.find("%@");
    for (std::size_t index = 0; index < pathPosition; ++index) {
        format.remove_prefix(format.find("%@") + 2);
        begin += values.begin()[index].size() + format.find("%@");
    }
    line.path = part(begin, path.size());
    return line;
}
