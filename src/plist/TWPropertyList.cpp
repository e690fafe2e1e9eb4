#include "plist/TWPropertyList.h"

#include "plist/TWBinaryPropertyListReader.h"
#include "plist/TWBinaryPropertyListWriter.h"
#include "plist/TWXMLPropertyListReader.h"
#include "plist/TWXMLPropertyListWriter.h"

TWPropertyListResult TWPropertyList::read(std::string_view bytes)
{
    TWPropertyListResult result;
    result.format = bytes.starts_with("bplist") ? TWPropertyListFormat::Binary : TWPropertyListFormat::XML;
    if (bytes.empty())
        result.problem = "the file is empty";
    else if (bytes.size() > MaximumBytes)
        result.problem = "the file is longer than 64 MiB";
    else if (result.format == TWPropertyListFormat::Binary)
        result.value = TWBinaryPropertyListReader(bytes).read(result.problem);
    else
        result.value = TWXMLPropertyListReader().read(bytes, result.problem);
    return result;
}

std::optional<std::string> TWPropertyList::write(const TWValue& value, TWPropertyListFormat format)
{
    if (format == TWPropertyListFormat::Binary)
        return TWBinaryPropertyListWriter().write(value);
    return TWXMLPropertyListWriter().write(value);
}
