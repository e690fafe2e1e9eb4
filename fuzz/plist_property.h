#pragma once

#include "plist/TWPropertyList.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// Properties of reading and writing that hold for any bytes. Used by the fuzz targets and by the unit tests that replay
// their finds.
namespace TWPlistProperty {

inline void require(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

inline void checkWritten(const TWValue& value, std::string_view written, TWPropertyListFormat format)
{
    const TWPropertyListResult again = TWPropertyList::read(written);
    require(again.value.has_value(), "what is written can be read");
    require(again.format == format, "it has the format asked for");
    require(*again.value == value, "what is read back equals what was written");
}

// Checks that the bytes are read or refused, and that what was read as XML can be written in both formats. A few binary
// bytes can stand for a value that is too long to be written.
inline void check(std::string_view bytes)
{
    const TWPropertyListResult result = TWPropertyList::read(bytes);
    require(result.value.has_value() == result.problem.empty(), "there is either a value or a problem");
    if (!result.value)
        return;
    const auto binary = TWPropertyList::write(*result.value, TWPropertyListFormat::Binary);
    const auto xml = TWPropertyList::write(*result.value, TWPropertyListFormat::XML);
    if (result.format == TWPropertyListFormat::XML)
        require(binary && xml, "what came as XML can be written");
    if (binary)
        checkWritten(*result.value, *binary, TWPropertyListFormat::Binary);
    if (xml)
        checkWritten(*result.value, *xml, TWPropertyListFormat::XML);
}

// Checks the bytes as the objects of a binary list with a valid table, in which reference n is the object at byte n. So
// random changes affect the objects; in a whole file they would mostly break the table.
inline void checkAsObjects(std::string_view bytes)
{
    const std::size_t count = std::min<std::size_t>(bytes.size(), 256);
    std::string file = "bplist00";
    file += bytes;
    const std::size_t table = file.size();
    const auto append = [&](std::size_t number, int size) {
        while (size-- > 0)
            file += static_cast<char>(number >> 8 * size);
    };
    for (std::size_t i = 0; i < count; i++)
        append(8 + i, 2);
    append(0, 6);
    append(2, 1); // bytes per offset
    append(1, 1); // bytes per reference
    append(count, 8);
    append(0, 8); // the top object
    append(table, 8);
    check(file);
}

}
