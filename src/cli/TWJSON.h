#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// Writes one JSON object per line, with the keys in the order in which they were added. Bytes that are not UTF-8 become
// U+FFFD; characters that would control a terminal are escaped.
namespace TWJSON {

using Object = nlohmann::ordered_json;

// Adds the bytes as text and, if they are not valid UTF-8, also exactly, in Base64 under exactKey.
void addBytes(Object&, const std::string& key, const std::string& exactKey, std::string_view bytes);

std::string line(const Object&);

}
