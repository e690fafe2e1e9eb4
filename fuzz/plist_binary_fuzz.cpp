#include "plist_property.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string_view input(reinterpret_cast<const char*>(bytes), size);
    TWPlistProperty::check(input);
    TWPlistProperty::checkAsObjects(input);
    return 0;
}
