#include "plist/TWXMLPropertyListWriter.h"

#include "plist/TWPropertyList.h"
#include "plist/TWPropertyListBudget.h"
#include "plist/TWUnicode.h"
#include "support/TWBase64.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace {

constexpr std::string_view Header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                    "<plist version=\"1.0\">\n";
constexpr std::string_view Footer = "</plist>\n";

constexpr std::string_view NotText = "a text in it is not valid UTF-8 or has characters that XML cannot hold";
constexpr std::string_view NotADate = "a date in it has fractions of a second or is outside the years 0 to 9999";

}

std::optional<std::string> TWXMLPropertyListWriter::write(const TWValue& value, std::string_view& problem)
{
    output_ = Header;
    const bool written = writeValue(value);
    output_ += Footer;
    if (written && !isTooLong())
        return std::move(output_);
    problem = problem_;
    return std::nullopt;
}

bool TWXMLPropertyListWriter::fail(std::string_view problem)
{
    problem_ = problem;
    return false;
}

bool TWXMLPropertyListWriter::isTooLong()
{
    const bool tooLong = output_.size() > TWPropertyList::MaximumBytes;
    if (tooLong)
        problem_ = TWPropertyListBudget::TooLong;
    return tooLong;
}

bool TWXMLPropertyListWriter::writeValue(const TWValue& value)
{
    // Checked for each value and not only at the end, because deep indentation makes the output far longer than the
    // value.
    if (isTooLong())
        return false;
    if (const auto* string = value.string())
        return writeText("string", *string);
    if (const auto* dictionary = value.dictionary())
        return writeDictionary(*dictionary);
    if (const auto* items = value.array())
        return writeArray(*items);
    indent();
    if (const auto* date = value.date())
        return writeDate(*date);
    if (const auto* number = value.integer())
        writeInteger(*number);
    else if (const auto* boolean = value.boolean())
        output_ += *boolean ? "<true/>\n" : "<false/>\n";
    else if (const auto* real = value.real())
        writeReal(*real);
    else if (const auto* data = value.data())
        return writeData(data->bytes);
    return true;
}

void TWXMLPropertyListWriter::startContainer(std::string_view name, bool empty)
{
    indent();
    output_.append("<").append(name).append(empty ? "/>\n" : ">\n");
    depth_++;
}

void TWXMLPropertyListWriter::endContainer(std::string_view name, bool empty)
{
    depth_--;
    if (empty)
        return;
    indent();
    output_.append("</").append(name).append(">\n");
}

bool TWXMLPropertyListWriter::writeArray(const TWValue::Array& items)
{
    startContainer("array", items.empty());
    for (const TWValue& item : items) {
        if (!writeValue(item))
            return false;
    }
    endContainer("array", items.empty());
    return true;
}

bool TWXMLPropertyListWriter::writeDictionary(const TWDictionary& dictionary)
{
    startContainer("dict", dictionary.entries().empty());
    for (const auto& [key, value] : dictionary.entries()) {
        if (!writeText("key", key) || !writeValue(value))
            return false;
    }
    endContainer("dict", dictionary.entries().empty());
    return true;
}

namespace {

// Returns the number of bytes at the front that can be copied unchanged.
std::size_t plainLength(std::string_view text)
{
    static constexpr auto Plain = [] {
        std::array<bool, 256> plain{};
        for (std::size_t i = 0; i < plain.size(); i++)
            plain[i] = (i >= ' ' && i < 0x80 && i != '<' && i != '>' && i != '&') || i == '\t' || i == '\n';
        return plain;
    }();
    std::size_t length = 0;
    while (length < text.size() && Plain[static_cast<unsigned char>(text[length])])
        length++;
    return length;
}

// Returns "" for a character that is not escaped. A carriage return is written as a number, because readers turn a
// plain one into a newline.
std::string_view escaped(char32_t character)
{
    switch (character) {
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '&':
        return "&amp;";
    case '\r':
        return "&#13;";
    default:
        return {};
    }
}

bool appendEscaped(std::string_view text, std::string& output)
{
    while (true) {
        const std::size_t length = plainLength(text);
        output += text.substr(0, length);
        text.remove_prefix(length);
        if (text.empty())
            return true;
        const std::string_view before = text;
        const char32_t character = TWUnicode::takeUTF8(text);
        if (character == TWUnicode::Invalid || character == 0xfffe || character == 0xffff)
            return false;
        const std::string_view instead = escaped(character);
        if (instead.empty() && character < ' ')
            return false;
        output += instead.empty() ? before.substr(0, before.size() - text.size()) : instead;
    }
}

}

bool TWXMLPropertyListWriter::writeText(std::string_view element, std::string_view text)
{
    indent();
    output_.append("<").append(element).append(">");
    if (!appendEscaped(text, output_))
        return fail(NotText);
    output_.append("</").append(element).append(">\n");
    return true;
}

void TWXMLPropertyListWriter::writeInteger(std::int64_t number)
{
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    output_.append("<integer>").append(digits, end).append("</integer>\n");
}

void TWXMLPropertyListWriter::writeReal(double number)
{
    char digits[32];
    // Writes the fewest digits that read back as the same number.
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    output_ += "<real>";
    if (std::isnan(number))
        output_ += "nan";
    else if (std::isinf(number))
        output_ += number > 0 ? "+infinity" : "-infinity";
    else
        output_.append(digits, end);
    output_ += "</real>\n";
}

bool TWXMLPropertyListWriter::writeDate(TWDate date)
{
    using namespace std::chrono;
    constexpr sys_days Epoch = 2001y / January / 1;
    constexpr auto First = duration<double>(sys_days(0y / January / 1) - Epoch).count();
    constexpr auto End = duration<double>(sys_days(10000y / January / 1) - Epoch).count();
    // Refuses NaN too, because every comparison with it is false.
    if (!(date.secondsSince2001 >= First && date.secondsSince2001 < End
            && std::floor(date.secondsSince2001) == date.secondsSince2001))
        return fail(NotADate);
    const sys_seconds time = Epoch + seconds(static_cast<std::int64_t>(date.secondsSince2001));
    const sys_days midnight = floor<days>(time);
    const year_month_day day(midnight);
    const hh_mm_ss clock(time - midnight);
    char text[40];
    const int length = std::snprintf(text, sizeof text, "<date>%04d-%02u-%02uT%02d:%02d:%02dZ</date>\n",
        int(day.year()), unsigned(day.month()), unsigned(day.day()), int(clock.hours().count()),
        int(clock.minutes().count()), int(clock.seconds().count()));
    output_.append(text, std::size_t(length));
    return true;
}

bool TWXMLPropertyListWriter::writeData(std::string_view bytes)
{
    output_ += "<data>\n";
    const auto columns = static_cast<std::size_t>(std::max(16, 76 - 8 * depth_));
    const std::size_t bytesPerLine = columns / 4 * 3;
    while (!bytes.empty()) {
        if (isTooLong())
            return false;
        indent();
        TWBase64::append(bytes.substr(0, bytesPerLine), output_);
        output_ += '\n';
        bytes.remove_prefix(std::min(bytesPerLine, bytes.size()));
    }
    indent();
    output_ += "</data>\n";
    return true;
}
