#pragma once

#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

// One JSON object per line, keys in the order of adding. Bytes that are no UTF-8 become U+FFFD.
namespace TWJSON {

using Object = nlohmann::ordered_json;

// Adds the path, and exactly, in base64 under "pathBytes", when it is no UTF-8.
void addPath(Object&, const std::string& key, std::string_view path);

std::string line(const Object&);

}
