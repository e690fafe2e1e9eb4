#include "formats/TWFileFormats.h"

#include "formats/TWBinaryPropertyListScanner.h"
#include "formats/TWEntryCuts.h"
#include "formats/TWINIScanner.h"
#include "formats/TWJSONScanner.h"
#include "formats/TWPropertyListKeys.h"
#include "formats/TWXMLScanner.h"

#include <array>

namespace {

constexpr std::string_view TooLong = "it is longer than 64 MB";
constexpr std::string_view Database = "it is a database";
constexpr std::string_view NotText = "it holds a NUL byte";

static_assert(TWFileFormats::MaximumBytes == 64'000'000);

template <typename Scanner>
bool scan(std::string_view bytes, TWEntryCuts& cuts, TWFoundEntries& found)
{
    return Scanner(bytes, cuts).scan(found.problem);
}

template <>
bool scan<TWXMLScanner>(std::string_view bytes, TWEntryCuts& cuts, TWFoundEntries& found)
{
    TWXMLScanner scanner(bytes, cuts);
    const bool valid = scanner.scan(found.problem);
    found.format = scanner.formatName();
    return valid;
}

bool isBinaryPropertyList(std::string_view bytes)
{
    return bytes.starts_with("bplist");
}

bool isAnything(std::string_view)
{
    return true;
}

bool isNothing(std::string_view)
{
    return false;
}

struct Format {
    std::string_view name;
    bool isText; // without NUL bytes
    bool (*recognises)(std::string_view bytes);
    bool (*mayBeOther)(std::string_view bytes); // if recognised, but damaged
    bool (*scan)(std::string_view bytes, TWEntryCuts& cuts, TWFoundEntries& found);
};

// The first format that recognises a file scans it.
constexpr std::array Formats{
    Format{ "binary property list", false, isBinaryPropertyList, isNothing, scan<TWBinaryPropertyListScanner> },
    Format{ "XML", true, TWXMLScanner::recognises, isNothing, scan<TWXMLScanner> },
    Format{ "JSON", true, TWJSONScanner::recognises, TWJSONScanner::mayBeINI, scan<TWJSONScanner> },
    Format{ "INI", true, isAnything, isNothing, scan<TWINIScanner> },
};

bool scanAs(const Format& format, std::string_view bytes, TWEntryCuts& cuts, TWFoundEntries& found)
{
    found = { format.name, {}, {} };
    if (format.isText && bytes.find('\0') != bytes.npos) {
        found.problem = NotText;
        return false;
    }
    return format.scan(bytes, cuts, found);
}

// Calls the function for each format that the file may have until it returns true.
template <typename Function>
TWFoundEntries scanFile(std::string_view bytes, const Function& function)
{
    TWFoundEntries found;
    if (bytes.size() > TWFileFormats::MaximumBytes || TWFileFormats::isDatabase(bytes)) {
        found.problem = TWFileFormats::isDatabase(bytes) ? Database : TooLong;
        return found;
    }
    for (const Format& format : Formats) {
        if (format.recognises(bytes) && (function(format, found) || !format.mayBeOther(bytes)))
            break;
    }
    return found;
}

}

bool TWFileFormats::isDatabase(std::string_view beginning)
{
    using namespace std::string_view_literals;
    return beginning.starts_with("SQLite format 3\0"sv);
}

TWFoundEntries TWFileFormats::find(std::string_view bytes, const std::vector<std::string>& keys)
{
    std::optional<std::string> unused;
    return cut(bytes, keys, unused);
}

TWFoundEntries TWFileFormats::cut(
    std::string_view bytes, const std::vector<std::string>& keys, std::optional<std::string>& remainingBytes)
{
    remainingBytes.reset();
    return scanFile(bytes, [&](const Format& format, TWFoundEntries& found) {
        TWEntryCuts cuts(bytes, keys);
        if (!scanAs(format, bytes, cuts, found))
            return false;
        found.counts = cuts.counts();
        remainingBytes = cuts.takeRemainingBytes();
        return true;
    });
}

std::vector<TWFoundKey> TWFileFormats::findKeys(std::string_view bytes, const std::vector<std::string>& keywords)
{
    std::vector<TWFoundKey> keys;
    scanFile(bytes, [&](const Format& format, TWFoundEntries& found) {
        TWKeyCollector collector(keywords);
        TWEntryCuts cuts(bytes, {}, &collector);
        if (!scanAs(format, bytes, cuts, found))
            return false;
        if (found.format.ends_with("property list"))
            TWPropertyListKeys::report(bytes, collector);
        keys = collector.takeKeys();
        return true;
    });
    return keys;
}
