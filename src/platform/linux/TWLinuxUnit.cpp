#include "platform/linux/TWLinuxUnit.h"

#include <algorithm>

namespace {

constexpr std::size_t RandomPartLength = 36; // of the name of a unit of a Snap

int hexDigit(char digit)
{
    return digit >= '0' && digit <= '9' ? digit - '0' : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

// Replaces each "\x2d" by the byte that it stands for.
std::string unescaped(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const bool escape
            = text.size() >= 4 && text.starts_with("\\x") && hexDigit(text[2]) >= 0 && hexDigit(text[3]) >= 0;
        result += escape ? static_cast<char>(hexDigit(text[2]) * 16 + hexDigit(text[3])) : text.front();
        text.remove_prefix(escape ? 4 : 1);
    }
    return result;
}

// "snap.NAME.PROGRAM-RANDOM", without "snap."; the application is called NAME_PROGRAM.
void parseSnap(std::string_view name, TWLinuxUnit& unit)
{
    unit.kind = TWLinuxUnit::Kind::Snap;
    if (name.size() > RandomPartLength) {
        unit.instance = name.substr(name.size() - RandomPartLength);
        name.remove_suffix(RandomPartLength + 1);
    }
    unit.application = name;
    std::replace(unit.application.begin(), unit.application.end(), '.', '_');
}

// "LAUNCHER-IDENTIFIER" or "IDENTIFIER". Dashes of the identifier should be escaped, but not everybody does so.
void parseIdentifier(std::string_view name, TWLinuxUnit& unit)
{
    const auto dash = name.find('-');
    if (name.substr(0, dash) == "flatpak")
        unit.kind = TWLinuxUnit::Kind::Flatpak;
    unit.application = unescaped(dash == std::string_view::npos ? name : name.substr(dash + 1));
}

bool removePrefix(std::string_view& text, std::string_view prefix)
{
    const bool has = text.starts_with(prefix);
    text.remove_prefix(has ? prefix.size() : 0);
    return has;
}

bool removeSuffix(std::string_view& text, std::string_view suffix)
{
    const bool has = text.ends_with(suffix);
    text.remove_suffix(has ? suffix.size() : 0);
    return has;
}

// Without an application if the unit is for none.
TWLinuxUnit parseUnit(std::string_view name)
{
    TWLinuxUnit unit;
    unit.name = name;
    const bool isScope = removeSuffix(name, ".scope");
    if (isScope && removePrefix(name, "snap."))
        parseSnap(name, unit);
    if ((!isScope && !removeSuffix(name, ".service")) || !removePrefix(name, "app-"))
        return unit;
    const auto end = isScope ? name.rfind('-') : name.find('@');
    if (end != std::string_view::npos)
        unit.instance = name.substr(end + 1);
    parseIdentifier(name.substr(0, end), unit);
    return unit;
}

}

TWLinuxUnit TWLinuxUnitOfControlGroup(std::string_view line)
{
    TWLinuxUnit innermost;
    std::string_view slice; // of an application that is a service with a name of its own
    while (!line.empty()) {
        auto part = line.substr(0, line.find('/'));
        line.remove_prefix(std::min(part.size() + 1, line.size()));
        auto unit = parseUnit(part);
        if (unit.application.empty() && !slice.empty() && part.ends_with(".service"))
            parseIdentifier(slice, unit);
        if (!unit.application.empty() || unit.isOfManager())
            innermost = std::move(unit);
        const bool isSlice = removePrefix(part, "app-") && removeSuffix(part, ".slice");
        slice = isSlice ? part : std::string_view();
    }
    return innermost;
}
