#include "settings/TWSettings.h"

#include <algorithm>
#include <charconv>

namespace {

using enum TWKeyType;

constexpr TWKeyRow Rows[] = {
    { TWKey::ApplicationsCleaner, Boolean, "ApplicationsCleaner", "quit the chosen applications in a run" },
    { TWKey::RecentItemsCleaner, Boolean, "RecentItemsCleaner", "remove recent items in a run" },
    { TWKey::TrashCleaner, Boolean, "TrashCleaner", "empty the Trash in a run" },
    { TWKey::VolumesCleaner, Boolean, "VolumesCleaner", "unmount the chosen volumes in a run" },
    { TWKey::ClipboardCleaner, Boolean, "ClipboardCleaner", "clear the clipboard in a run" },
    { TWKey::FilesCleaner, Boolean, "FilesCleaner", "delete what the Files rules name in a run" },
    { TWKey::LogsCleaner, Boolean, "LogsCleaner", "delete the checked logs in a run" },
    { TWKey::SafariTabsCleaner, Boolean, "SafariTabsCleaner", "close browser tabs in a run" },
    { TWKey::ShowResults, Boolean, "ShowResults", "open the results window by itself" },
    { TWKey::ShowResultsMode, Integer, "ShowResultsMode", "when: 0 a cleaner fails, 1 a run starts, 2 a run ends" },
    { TWKey::GrowlCleaningDone, Boolean, "GrowlCleaningDone", "post a notification when a run ends" },
    { TWKey::AutoQuit, Boolean, "AutoQuit", "quit when a run ends" },
    { TWKey::AutoQuitMode, Integer, "AutoQuitMode", "0 only if every cleaner succeeded, else always" },
    { TWKey::BounceDockIcon, Boolean, "BounceDockIcon", "ask for attention when a run ends" },
    { TWKey::SecurelyDeleteFiles, Boolean, "SecurelyDeleteFiles", "overwrite files before deleting them" },
    { TWKey::SecurelyDeleteFilesMode, Integer, "SecurelyDeleteFilesMode",
        "how often: 0 once, 1 seven times, 2 thirty-five times" },
    { TWKey::UseAuthorization, Boolean, "UseAuthorization", "reserved; no deletion asks for administrator rights" },
    { TWKey::ManualFilesRuleCreation, Boolean, "ManualFilesRuleCreation",
        "Add in the Files editor makes an empty rule" },
    { TWKey::ManualRecentItemsRuleCreation, Boolean, "ManualRecentItemsRuleCreation",
        "Add in the Recent Items editor makes an empty rule" },
    { TWKey::ApplicationsForceQuit, Boolean, "ApplicationsForceQuit",
        "end applications that still run at the time-out" },
    { TWKey::ApplicationsTimeout, Integer, "ApplicationsTimeout",
        "how long to wait for applications to quit, in seconds" },
    { TWKey::UUID, String, "UUID", "identifies this installation" },
    { TWKey::LastLaunchedVersion, String, "LastLaunchedVersion", "the version of the latest launch" },
    { TWKey::FirstLaunchDone, Boolean, "FirstLaunchDone", "the greeting has been shown" },
};

std::string lowercase(std::string text)
{
    std::transform(
        text.begin(), text.end(), text.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return text;
}

bool fits(const TWValue& value, TWKeyType type)
{
    const auto number = value.number();
    if (type == Integer)
        return number && *number >= 0 && *number <= INT32_MAX;
    return type == String ? value.string() != nullptr : number.has_value();
}

}

TWSettings::TWSettings(TWUserDefaults& userDefaults)
    : userDefaults_(userDefaults)
{
}

std::span<const TWKeyRow> TWSettings::keys()
{
    return Rows;
}

const TWKeyRow& TWSettings::row(TWKey key)
{
    return Rows[static_cast<std::size_t>(key)];
}

const TWKeyRow* TWSettings::rowNamed(std::string_view name)
{
    const auto found
        = std::find_if(std::begin(Rows), std::end(Rows), [&](const TWKeyRow& row) { return row.name == name; });
    return found == std::end(Rows) ? nullptr : found;
}

bool TWSettings::boolean(TWKey key) const
{
    const auto value = find(key);
    return value && value->number().value_or(0) != 0;
}

std::int32_t TWSettings::integer(TWKey key) const
{
    const auto value = find(key);
    return value ? static_cast<std::int32_t>(value->number().value_or(0)) : 0;
}

std::string TWSettings::string(TWKey key) const
{
    const auto value = find(key);
    return value && value->string() ? *value->string() : "";
}

// Does not store an unchanged value again, because writing waits for the disk.
void TWSettings::set(TWKey key, const TWValue& value)
{
    if (stored(row(key)) == value)
        return;
    userDefaults_.setValue(row(key).name, value);
}

void TWSettings::reset(TWKey key)
{
    userDefaults_.removeValue(row(key).name);
}

std::optional<TWValue> TWSettings::parse(TWKeyType type, const std::string& text)
{
    if (type == String)
        return TWValue(text);
    if (type == Boolean) {
        const auto word = lowercase(text);
        for (const auto* yes : { "true", "yes", "on", "1" }) {
            if (word == yes)
                return TWValue(true);
        }
        for (const auto* no : { "false", "no", "off", "0" }) {
            if (word == no)
                return TWValue(false);
        }
        return std::nullopt;
    }
    std::int32_t integer = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), integer);
    if (error != std::errc() || end != text.data() + text.size() || integer < 0)
        return std::nullopt;
    return TWValue(integer);
}

std::optional<TWValue> TWSettings::stored(const TWKeyRow& row) const
{
    auto value = userDefaults_.value(row.name);
    if (value && value->string())
        value = parse(row.type, *value->string());
    return value && fits(*value, row.type) ? value : std::nullopt;
}

std::optional<TWValue> TWSettings::find(TWKey key) const
{
    const auto& found = row(key);
    if (auto value = stored(found))
        return value;
    const auto* registered = registered_.find(found.name);
    return registered && fits(*registered, found.type) ? std::optional(*registered) : std::nullopt;
}
