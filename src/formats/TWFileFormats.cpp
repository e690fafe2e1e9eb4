#include "formats/TWFileFormats.h"

#include "formats/TWBinaryPropertyListScanner.h"
#include "formats/TWEntryCuts.h"
#include "formats/TWINIScanner.h"
#include "formats/TWJSONScanner.h"
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

struct Format {
    std::string_view name;
    bool isText; // without NUL bytes
    bool (*recognises)(std::string_view bytes);
    bool (*scan)(std::string_view bytes, TWEntryCuts& cuts, TWFoundEntries& found);
};

// The first format that recognises a file scans it.
constexpr std::array Formats{
    Format{ "binary property list", false, isBinaryPropertyList, scan<TWBinaryPropertyListScanner> },
    Format{ "XML", true, TWXMLScanner::recognises, scan<TWXMLScanner> },
    Format{ "JSON", true, TWJSONScanner::recognises, scan<TWJSONScanner> },
    Format{ "INI", true, isAnything, scan<TWINIScanner> },
};

bool scanFile(std::string_view bytes, TWEntryCuts& cuts, TWFoundEntries& found)
{
    for (const Format& format : Formats) {
        if (!format.recognises(bytes))
            continue;
        found.format = format.name;
        if (format.isText && bytes.find('\0') != bytes.npos) {
            found.problem = NotText;
            return false;
        }
        return format.scan(bytes, cuts, found);
    }
    return false;
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
    TWFoundEntries found;
    TWEntryCuts cuts(bytes, keys);
    remainingBytes.reset();
    if (bytes.size() > MaximumBytes)
        found.problem = TooLong;
    else if (isDatabase(bytes))
        found.problem = Database;
    else if (scanFile(bytes, cuts, found)) {
        found.counts = cuts.counts();
        remainingBytes = cuts.takeRemainingBytes();
    }
    return found;
}
