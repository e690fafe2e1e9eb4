#include "formats_property.h"

#include <cstdint>

// The first line holds the keys.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    std::string_view input(reinterpret_cast<const char*>(bytes), size);
    const TWFormatsProperty::Keys keys = TWFormatsProperty::takeKeys(input);
    TWFormatsProperty::check(input, keys, "property list"); // XML and binary
    return 0;
}
