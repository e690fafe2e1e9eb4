#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// Texts are UTF-8; file names inside them may hold any bytes.
namespace TWText {

// Puts the values, in order, in the place of each "%@". A "%@" without a value stays as it is.
std::string fill(std::string_view format, std::initializer_list<std::string_view> values);

// Valid UTF-8 for showing: each byte that is not part of a valid sequence becomes U+FFFD.
std::string validUTF8(std::string_view bytes);

bool isValidUTF8(std::string_view bytes);

// For one line on a terminal or in a window: as validUTF8, and a file name can neither break the line, nor drive the
// terminal, nor turn the text around it. Control characters become their pictures (newline U+240A); those without a
// picture, separators of lines and direction marks become "<U+202E>".
std::string oneLine(std::string_view bytes);

// The same for a line of JSON: those characters become escapes, which stand for exactly them.
std::string harmlessJSON(std::string_view json);

// "1 item", "12 items" with thousands separated: "12,345 items".
std::string count(unsigned long long number, std::string_view singular, std::string_view plural);

// A size as file managers show it: decimal units, "512 bytes", "3.4 GB".
std::string size(unsigned long long bytes);

}
