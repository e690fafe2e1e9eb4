#pragma once

#include "formats/TWKeyCollector.h"

#include <string_view>

// Reports the dictionaries and arrays of a property list, XML or binary, to a collector. Any thread.
namespace TWPropertyListKeys {

// Reports nothing if the list cannot be read or is no dictionary.
void report(std::string_view bytes, TWKeyCollector& collector);

}
