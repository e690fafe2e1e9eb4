#pragma once

#include <ctime>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

// Texts are UTF-8; file names in them may hold any bytes. Any thread.
namespace TWText {

// Replaces each "%@" by the next of the values. A "%@" without a value stays as it is.
std::string fill(std::string_view format, std::initializer_list<std::string_view> values);

// The parts between the separators; none after a last separator.
std::vector<std::string> split(std::string_view text, char separator);

// The parts that are not "", with the separator between them.
std::string join(const std::vector<std::string>& parts, std::string_view separator);

// Makes a text valid UTF-8 for display: each byte that is not part of a valid sequence becomes U+FFFD.
std::string validUTF8(std::string_view bytes);

bool isValidUTF8(std::string_view bytes);

// Makes a text safe for one line on a terminal or in a window: like validUTF8(), and a file name in it can neither
// break the line, nor control the terminal, nor reverse the text around it. Control characters become their pictures
// (newline becomes U+240A); those without a picture, line separators and direction marks are shown as, for example,
// "<U+202E>".
std::string oneLine(std::string_view bytes);

// Makes a text safe for display in many lines: like oneLine(), but line feeds and tabs stay.
std::string manyLines(std::string_view bytes);

// Like oneLine() for a line of JSON, without a change of meaning: those characters become JSON escapes.
std::string harmlessJSON(std::string_view json);

// "12", "12,345".
std::string number(unsigned long long);

// "1 item", "12 items", "12,345 items".
std::string count(unsigned long long count, std::string_view singular, std::string_view plural);

// A time of day and date in the local time zone, in a format of strftime(); "" if it cannot be told.
std::string localTime(std::time_t, const char* format);

// Date and time as "2026-11-22 04:30:00 +0000"; "" if it cannot be told.
std::string utcTime(std::time_t);

// A size as file managers show it: decimal units, "512 bytes", "3.4 GB".
std::string size(unsigned long long bytes);

}
