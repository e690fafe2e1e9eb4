#include "cli/TWSettingsCommands.h"

#include "cli/TWJSON.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto NoSuchKey = "There is no setting \"%@\". Try \"tidewell settings list\".\n";
constexpr auto NotABoolean = "\"%@\" takes \"true\" or \"false\", not \"%@\".\n";
constexpr auto NotANumber = "\"%@\" takes a whole number of 0 or more, not \"%@\".\n";

constexpr auto LaterCleaner = "Saved, but the cleaner \"%@\" comes in a later version.\n";

constexpr auto Key = "KEY";
constexpr auto Value = "VALUE";
constexpr auto KeyHelp = "A key from \"tidewell settings list\"";
constexpr auto ValueHelp = "true, false, a whole number of 0 or more or a text, as the key requires";

TWJSON::Object settingValue(const TWSettings& settings, const TWKeyRow& row)
{
    switch (row.type) {
    case TWKeyType::Boolean:
        return settings.boolean(row.key);
    case TWKeyType::Integer:
        return settings.integer(row.key);
    case TWKeyType::String:
        break;
    }
    return TWText::validUTF8(settings.string(row.key));
}

std::string settingText(const TWSettings& settings, const TWKeyRow& row)
{
    const auto value = settingValue(settings, row);
    return value.is_string() ? TWText::oneLine(value.get<std::string>()) : value.dump();
}

std::string settingLine(const TWSettings& settings, const TWKeyRow& row, bool json)
{
    if (json)
        return TWJSON::line(
            { { "key", row.name }, { "value", settingValue(settings, row) }, { "meaning", row.meaning } });
    std::string name = row.name;
    name.resize(31, ' ');
    std::string value = settingText(settings, row);
    value.resize(std::max<std::size_t>(value.size(), 6), ' ');
    return name + value + "  " + row.meaning + "\n";
}

void store(TWSettings& settings, const TWKeyRow& row, const std::optional<TWValue>& value)
{
    if (value)
        settings.set(row.key, *value);
    else
        settings.reset(row.key);
}

// Without a value, the setting returns to its default. A change that cannot be saved is undone, so that it does not
// take effect in the window either.
TWCommandResult changeSetting(TWSettings& settings, const TWKeyRow& row, const std::optional<TWValue>& value)
{
    auto& defaults = settings.userDefaults();
    const auto before = defaults.value(row.name);
    store(settings, row, value);
    const auto problem = defaults.synchronize();
    if (problem.empty())
        return {};
    if (defaults.value(row.name) != before)
        store(settings, row, before);
    return { TWStatus::Failure, "", TWText::oneLine(problem) + "\n" };
}

TWCommandResult noSuchKey(const TWInvocation& invocation)
{
    return TWWrongUse(TWText::fill(NoSuchKey, { TWText::oneLine(invocation.text(Key)) }));
}

TWCommandResult list(const TWCommandContext& context, const TWInvocation& invocation)
{
    TWCommandResult result;
    for (const auto& row : TWSettings::keys())
        result.out += settingLine(context.delegate->settings(), row, invocation.json);
    return result;
}

TWCommandResult get(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto& settings = context.delegate->settings();
    const auto* row = TWSettings::rowNamed(invocation.text(Key));
    if (!row)
        return noSuchKey(invocation);
    return { TWStatus::Success,
        invocation.json ? settingLine(settings, *row, true) : settingText(settings, *row) + "\n", "" };
}

// "" or one line if the key switches on a cleaner that is not implemented yet.
std::string remarkOn(TWKey key)
{
    for (const auto& row : TWCleanerTable()) {
        if (row.key == key && !row.available)
            return TWText::fill(LaterCleaner, { row.name });
    }
    return "";
}

TWCommandResult set(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto* row = TWSettings::rowNamed(invocation.text(Key));
    if (!row)
        return noSuchKey(invocation);
    const auto text = invocation.text(Value);
    const auto value = TWSettings::parse(row->type, text);
    if (!value)
        return TWWrongUse(TWText::fill(
            row->type == TWKeyType::Boolean ? NotABoolean : NotANumber, { row->name, TWText::oneLine(text) }));
    auto result = changeSetting(context.delegate->settings(), *row, value);
    if (result.status == TWStatus::Success && context.delegate->settings().boolean(row->key))
        result.err = remarkOn(row->key);
    return result;
}

TWCommandResult reset(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto* row = TWSettings::rowNamed(invocation.text(Key));
    return row ? changeSetting(context.delegate->settings(), *row, std::nullopt) : noSuchKey(invocation);
}

}

TWCommandGroup TWSettingsCommands()
{
    using enum TWCommandKind;
    using enum TWArgument::Kind;
    using enum TWArgument::Need;
    return { "settings", "Show and change settings",
        {
            { "list", "All settings with their values", Reads, {}, list },
            { "get", "Print one value", Reads, { { Text, Required, Key, KeyHelp } }, get },
            { "set", "Change one value", ChangesLists,
                { { Text, Required, Key, KeyHelp }, { Text, Required, Value, ValueHelp } }, set },
            { "reset", "Back to the default", ChangesLists, { { Text, Required, Key, KeyHelp } }, reset },
        } };
}
