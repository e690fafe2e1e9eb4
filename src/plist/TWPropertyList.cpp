#include "plist/TWPropertyList.h"

#include "plist/TWBinaryPropertyListWriter.h"
#include "plist/TWPropertyListBudget.h"
#include "plist/TWPropertyListReader.h"
#include "plist/TWXMLPropertyListWriter.h"

namespace {

std::optional<std::string> writeAs(const TWValue& value, TWPropertyListFormat format, std::string_view& problem)
{
    problem = TWPropertyListBudget().chargeValue(value, 0);
    if (!problem.empty())
        return std::nullopt;
    if (format == TWPropertyListFormat::Binary)
        return TWBinaryPropertyListWriter().write(value, problem);
    return TWXMLPropertyListWriter().write(value, problem);
}

}

TWPropertyListResult TWPropertyList::read(std::string_view bytes)
{
    TWPropertyListReader reader;
    reader.take(bytes);
    return reader.finish();
}

std::optional<std::string> TWPropertyList::write(const TWValue& value, TWPropertyListFormat format)
{
    std::string_view problem;
    return writeAs(value, format, problem);
}

std::optional<std::string> TWPropertyList::write(const TWValue& value, std::string& problem)
{
    std::string_view reason;
    auto bytes = writeAs(value, TWPropertyListFormat::XML, reason);
    // File names may contain control characters, which XML cannot hold; and binary is shorter.
    if (!bytes)
        bytes = writeAs(value, TWPropertyListFormat::Binary, reason);
    problem = reason;
    return bytes;
}
