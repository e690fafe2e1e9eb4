#pragma once

#include <optional>
#include <string>
#include <string_view>

// Base64 with the standard alphabet and padding. Any thread.
namespace TWBase64 {

// Appends the bytes to the text, without line breaks.
void append(std::string_view bytes, std::string& text);

// Skips spaces, tabs and line breaks. Returns nothing if there is any other foreign character or the padding is wrong.
std::optional<std::string> decode(std::string_view text);

}
