#include "formats/TWINIScanner.h"

#include "formats/TWFormatText.h"
#include "plist/TWUnicode.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr std::string_view UnknownLine = "a line is neither blank, a comment, a group nor an entry";
constexpr std::string_view Ambiguous = "an indented line can be a part of the entry above it or an entry of its own";
constexpr std::string_view Backslash
    = "a backslash at the end of a line may continue it, next to an entry to be removed";

bool isComment(std::string_view text)
{
    return text.starts_with('#') || text.starts_with(';');
}

// XML or JSON, perhaps damaged, that looks like groups and entries must not be taken for INI. No name begins so.
bool beginsLikeOther(std::string_view name)
{
    return std::string_view("=<{[\"").find(name.front()) != std::string_view::npos || TWFormatText::start(name) > 0;
}

// The header up to the last bracket of the line. Only a comment may follow it.
std::string_view groupHeader(std::string_view text)
{
    const std::size_t end = text.rfind(']');
    if (end == text.npos)
        return {};
    const std::string_view rest = TWFormatText::trimmed(text.substr(end + 1));
    return rest.empty() || isComment(rest) ? text.substr(0, end + 1) : std::string_view();
}

// Reads the hexadecimal digits of an escape and takes them off the text.
bool takeHexadecimal(std::string_view& text, std::size_t digits, char32_t& number)
{
    unsigned value = 0;
    if (text.size() < digits)
        return false;
    const char* end = text.data() + digits;
    const auto [read, error] = std::from_chars(text.data(), end, value, 16);
    if (error != std::errc() || read != end)
        return false;
    number = value;
    text.remove_prefix(digits);
    return true;
}

// Qt writes characters as %20 or %U0153, KDE writes bytes as \x20.
bool takeEscape(std::string_view& text, std::string& result)
{
    const bool isByte = text.starts_with("\\x");
    const bool isLong = text.starts_with("%U");
    if (!isByte && !text.starts_with('%'))
        return false;
    std::string_view rest = text.substr(isByte || isLong ? 2 : 1);
    char32_t number = 0;
    if (!takeHexadecimal(rest, isLong ? 4 : 2, number))
        return false;
    text = rest;
    if (isByte)
        result += static_cast<char>(number);
    else
        TWUnicode::appendUTF8(number, result);
    return true;
}

std::string unescaped(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        if (!takeEscape(text, result)) {
            result += text.front();
            text.remove_prefix(1);
        }
    }
    return result;
}

bool isNested(std::string_view entry)
{
    // In KDE's files a backslash begins an escape and does not separate parts.
    return entry.find("\\x") == entry.npos && entry.find("\\\\") == entry.npos;
}

// The parts of a name, as many as are reported.
std::vector<TWKeyCollector::Step> steps(std::string_view name, std::string_view separator)
{
    std::vector<TWKeyCollector::Step> steps;
    while (steps.size() < TWKeyCollector::MaximumPath) {
        const std::size_t end = separator.empty() ? name.npos : name.find(separator);
        const std::string_view part = name.substr(0, end);
        steps.push_back({ std::string(part), unescaped(part) });
        if (end == name.npos)
            break;
        name.remove_prefix(end + separator.size());
    }
    return steps;
}

std::size_t endOfItem(std::string_view text, char separator)
{
    bool isQuoted = false;
    for (std::size_t place = 0; place < text.size(); place++) {
        if (text[place] == '\\')
            place++;
        else if (text[place] == '"')
            isQuoted = !isQuoted;
        else if (text[place] == separator && !isQuoted)
            return place;
    }
    return text.npos;
}

// Lists are separated by line ends, semicolons or commas.
char separatorOf(std::string_view text)
{
    for (const char separator : { '\n', ';', ',' }) {
        if (endOfItem(text, separator) != text.npos)
            return separator;
    }
    return '\0';
}

// A list of one item looks like a text, so the beginning of a path or an address has to do, or the name of an item.
bool isList(std::string_view name, std::string_view text)
{
    const bool isNumbered = !name.empty() && name.back() >= '0' && name.back() <= '9';
    const bool isFile
        = text.starts_with('/') || text.starts_with("~/") || text.starts_with("$HOME") || text.find("://") != text.npos;
    return isNumbered || isFile || separatorOf(text) != '\0';
}

void reportList(std::string_view text, TWKeyCollector& collector)
{
    const char separator = separatorOf(text);
    collector.begin(false);
    while (!text.empty()) {
        const std::size_t end = std::min(endOfItem(text, separator), text.size());
        std::string_view item = text.substr(0, end);
        if (item.ends_with('\r'))
            item.remove_suffix(1);
        if (!TWFormatText::isBlank(item))
            collector.value(TWFormatText::trimmed(item));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    collector.end();
}

}

TWINIScanner::TWINIScanner(std::string_view bytes, TWEntryCuts& cuts)
    : bytes_(bytes)
    , cuts_(cuts)
{
}

bool TWINIScanner::scan(std::string& problem)
{
    const bool valid = scanAll();
    problem = problem_;
    return valid;
}

bool TWINIScanner::fail(std::string_view problem)
{
    problem_ = problem;
    return false;
}

bool TWINIScanner::scanAll()
{
    for (std::size_t begin = TWFormatText::start(bytes_); begin < bytes_.size();) {
        const std::size_t next = std::min(bytes_.find('\n', begin), bytes_.size());
        std::string_view text = bytes_.substr(begin, next - begin);
        if (text.ends_with('\r'))
            text.remove_suffix(1);
        const std::size_t indentation = std::min(text.find_first_not_of(" \t"), text.size());
        if (!takeLine({ begin, indentation, TWFormatText::trimmed(text), begin + text.size() }))
            return false;
        previousEnd_ = begin + text.size();
        begin = next + 1;
    }
    endEntry();
    endGroup();
    if (cuts_.collector())
        cuts_.collector()->enter({});
    return problem_.empty();
}

bool TWINIScanner::takeLine(const Line& line)
{
    if (!line.text.empty() && !isComment(line.text)) {
        if (entryIndentation_ != None && line.indentation > entryIndentation_)
            return takeContinuation(line);
        return line.text.starts_with('[') ? takeGroup(line) : takeEntry(line);
    }
    endEntry();
    if (line.text.empty() && groupGoesOn_)
        groupEnd_ = line.end;
    else
        groupGoesOn_ = false;
    return problem_.empty();
}

// Some programs read such a line and the next one as one; none writes it.
bool TWINIScanner::endsInBackslash(std::size_t end) const
{
    std::size_t begin = end;
    while (begin > 0 && bytes_[begin - 1] == '\\')
        begin--;
    return (end - begin) % 2 == 1;
}

bool TWINIScanner::open(TWEntryCuts::Key key, const Line& line)
{
    if (key != TWEntryCuts::NoKey) {
        cuts_.open(key, line.begin);
        if (endsInBackslash(previousEnd_))
            fail(Backslash);
    }
    return key != TWEntryCuts::NoKey;
}

// Programs differ in whether an indented line below an entry continues it. It is one or the other if it cannot be an
// entry; and it does not matter if neither goes.
bool TWINIScanner::takeContinuation(const Line& line)
{
    const bool isGroup = line.text.starts_with('[');
    if (!isGroup && line.text.find('=') == line.text.npos) {
        entryEnd_ = groupEnd_ = line.end;
        return true;
    }
    const auto mattersNow = [&] { return cutsEntry_ || (isGroup && cutsGroup_); };
    const bool mattersAbove = mattersNow();
    const bool taken = isGroup ? takeGroup(line) : takeEntry(line);
    return taken && ((!mattersAbove && !mattersNow()) || fail(Ambiguous));
}

bool TWINIScanner::takeGroup(const Line& line)
{
    endEntry();
    endGroup();
    const std::string_view header = groupHeader(line.text);
    if (header.empty() || beginsLikeOther(header.substr(1)))
        return fail(UnknownLine);
    cutsGroup_ = open(groupKey(header), line);
    if (cuts_.collector())
        reportGroup(header);
    groupEnd_ = line.end;
    groupGoesOn_ = true;
    return problem_.empty();
}

bool TWINIScanner::takeEntry(const Line& line)
{
    endEntry();
    const std::size_t sign = line.text.find('=');
    if (sign == line.text.npos || beginsLikeOther(line.text))
        return fail(UnknownLine);
    cutsEntry_ = open(entryKey(TWFormatText::trimmed(line.text.substr(0, sign))), line);
    entryIndentation_ = line.indentation;
    entryBegin_ = line.begin + line.indentation;
    entryEnd_ = groupEnd_ = line.end;
    groupGoesOn_ = true;
    return problem_.empty();
}

void TWINIScanner::endEntry()
{
    if (cutsEntry_) {
        cuts_.close(entryEnd_);
        if (endsInBackslash(entryEnd_))
            fail(Backslash);
    }
    if (cuts_.collector() && entryIndentation_ != None)
        reportEntry();
    cutsEntry_ = false;
    entryIndentation_ = None;
}

void TWINIScanner::endGroup()
{
    if (cutsGroup_)
        cuts_.close(groupEnd_);
    cutsGroup_ = false;
}

void TWINIScanner::reportGroup(std::string_view header)
{
    groupPath_ = steps(header.substr(1, header.size() - 2), "][");
    cuts_.collector()->enter(groupPath_);
}

void TWINIScanner::reportEntry()
{
    const std::string_view entry = bytes_.substr(entryBegin_, entryEnd_ - entryBegin_);
    const std::size_t sign = entry.find('=');
    const std::string_view whole = TWFormatText::trimmed(entry.substr(0, sign));
    const std::string_view name = whole.substr(0, whole.find('[', 1));
    std::string_view text = entry.substr(sign + 1);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    text = TWFormatText::trimmed(text);
    auto path = steps(name, isNested(name) ? "\\" : "");
    const TWKeyCollector::Step last = std::move(path.back());
    path.pop_back();
    path.insert(path.begin(), groupPath_.begin(), groupPath_.end());
    TWKeyCollector& collector = *cuts_.collector();
    collector.enter(std::move(path));
    collector.name(last.name, last.unescaped);
    if (collector.isInside() || !isList(last.name, text))
        collector.value(text);
    else
        reportList(text, collector);
}

TWEntryCuts::Key TWINIScanner::groupKey(std::string_view header) const
{
    std::string_view rest = header.substr(1, header.size() - 2);
    TWEntryCuts::Key key = keyOf(rest);
    for (std::size_t end = rest.find("]["); end != rest.npos; end = rest.find("][")) {
        key = std::min(key, keyOf(rest.substr(0, end)));
        rest.remove_prefix(end + 2);
    }
    return std::min(key, keyOf(rest));
}

TWEntryCuts::Key TWINIScanner::entryKey(std::string_view name) const
{
    const auto isPlain = [](char byte) { return byte != '[' && byte != '%' && byte != '\\'; };
    if (std::all_of(name.begin(), name.end(), isPlain))
        return cuts_.find(name); // nearly always
    std::string_view rest = name.substr(0, name.find('[', 1));
    TWEntryCuts::Key key = keyOf(rest);
    if (rest.size() < name.size())
        key = std::min(key, keyOf(name));
    std::size_t end = rest.find('\\');
    if (end == rest.npos || !isNested(rest))
        return key;
    for (; end != rest.npos; end = rest.find('\\')) {
        key = std::min(key, keyOf(rest.substr(0, end)));
        rest.remove_prefix(end + 1);
    }
    return std::min(key, keyOf(rest));
}

TWEntryCuts::Key TWINIScanner::keyOf(std::string_view name) const
{
    if (name.empty())
        return TWEntryCuts::NoKey;
    const TWEntryCuts::Key key = cuts_.find(name);
    if (key != TWEntryCuts::NoKey || (name.find('%') == name.npos && name.find('\\') == name.npos))
        return key;
    return cuts_.find(unescaped(name));
}
