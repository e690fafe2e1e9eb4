#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// One JSON object per line, keys in the order of adding. Bytes that are not UTF-8 become U+FFFD; characters that would
// drive a terminal are escaped.
namespace TWJSON {

using Object = nlohmann::ordered_json;

// Adds the bytes as text, and exactly, in base64 under the second key, when they are no UTF-8.
void addBytes(Object&, const std::string& key, const std::string& exactKey, std::string_view bytes);

std::string line(const Object&);

}
