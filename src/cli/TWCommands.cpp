#include "cli/TWCommands.h"

#include "cli/TWJSON.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <optional>

namespace {

using Action = TWInvocation::Action;

constexpr auto NoSuchKey = "There is no setting \"%@\". Try \"tidewell settings list\".\n";
constexpr auto NotABoolean = "\"%@\" takes \"true\" or \"false\", not \"%@\".\n";
constexpr auto NotANumber = "\"%@\" takes a whole number, not \"%@\".\n";
constexpr auto NoSuchRule = "There is no rule %@. Try \"tidewell files list\".\n";
constexpr auto NoRules = "No rules yet. Add one with \"tidewell files add PATH\".\n";
constexpr auto NoWords = "The dictionary is empty. Add words with \"tidewell words add WORD\".\n";
constexpr auto NoSuchWord = "The dictionary does not hold \"%@\".\n";
constexpr auto WordNotText = "A word must be valid UTF-8 text.\n";
constexpr auto NoPath = "A rule needs the path of a file or folder.\n";
constexpr auto PathNotText
    = "\"%@\" cannot be kept in a rule, because its name is not valid UTF-8. Rename it, or delete it by hand.\n";
constexpr auto KeptAsDamaged = "It was written anew now; the old file was kept as \"%@\".\n";

TWCommandResult wrongUse(std::string err)
{
    return { TWStatus::WrongUse, "", std::move(err) };
}

TWCommandResult saved(const std::string& problem)
{
    return problem.empty() ? TWCommandResult() : TWCommandResult{ TWStatus::Failure, "", problem + "\n" };
}

TWCommandResult printed(std::string out)
{
    return { TWStatus::Success, std::move(out), "" };
}

// ---- settings

TWJSON::Object settingValue(const TWSettings& settings, const TWKeyRow& row)
{
    const auto value = settings.lastingValue(row.key);
    switch (row.type) {
    case TWKeyType::Boolean:
        return value && value->number() != 0;
    case TWKeyType::Integer:
        return value ? value->number().value_or(0) : 0;
    case TWKeyType::String:
        break;
    }
    return value ? TWText::validUTF8(*value->string()) : "";
}

std::string settingText(const TWSettings& settings, const TWKeyRow& row)
{
    const auto value = settingValue(settings, row);
    return value.is_string() ? value.get<std::string>() : value.dump();
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

// Resets the setting if there is no value. If the change cannot be saved, it is taken back, also in the window.
TWCommandResult changeSetting(TWSettings& settings, const TWKeyRow& row, const std::optional<TWValue>& value)
{
    auto& defaults = settings.userDefaults();
    const auto before = defaults.value(row.name);
    store(settings, row, value);
    const auto problem = defaults.synchronize();
    if (!problem.empty() && defaults.value(row.name) != before)
        store(settings, row, before);
    return saved(problem);
}

TWCommandResult runSettings(TWTidewellAppDelegate& delegate, const TWInvocation& invocation)
{
    auto& settings = delegate.settings();
    if (invocation.action == Action::List) {
        std::string out;
        for (const auto& row : TWSettings::keys())
            out += settingLine(settings, row, invocation.json);
        return printed(out);
    }
    const auto* row = TWSettings::rowNamed(invocation.key);
    if (!row)
        return wrongUse(TWText::fill(NoSuchKey, { TWText::oneLine(invocation.key) }));
    if (invocation.action == Action::Get)
        return printed(invocation.json ? settingLine(settings, *row, true) : settingText(settings, *row) + "\n");
    if (invocation.action == Action::Reset)
        return changeSetting(settings, *row, std::nullopt);
    const auto value = TWSettings::parse(row->type, invocation.value);
    if (!value)
        return wrongUse(TWText::fill(row->type == TWKeyType::Boolean ? NotABoolean : NotANumber,
            { row->name, TWText::oneLine(invocation.value) }));
    return changeSetting(settings, *row, value);
}

// ---- words

TWCommandResult listWords(const std::vector<TWDictionaryWord>& words, bool json)
{
    std::string out;
    for (const auto& [word] : words)
        out += json ? TWJSON::line({ { "word", TWText::validUTF8(word) } }) : TWText::oneLine(word) + "\n";
    return { TWStatus::Success, out, words.empty() && !json ? NoWords : "" };
}

using DictionaryWords = std::vector<TWDictionaryWord>;

// The first of the words that is not in the dictionary.
std::optional<std::string> absentWord(const DictionaryWords& dictionary, const std::vector<std::string>& words)
{
    for (const auto& word : words) {
        if (std::find(dictionary.begin(), dictionary.end(), TWDictionaryWord{ word }) == dictionary.end())
            return word;
    }
    return std::nullopt;
}

void changeWords(DictionaryWords& dictionary, const TWInvocation& invocation)
{
    if (invocation.action == Action::Clear)
        dictionary.clear();
    for (const auto& word : invocation.words) {
        if (invocation.action == Action::Add)
            dictionary.push_back({ word });
        else
            std::erase(dictionary, TWDictionaryWord{ word });
    }
}

TWCommandResult runWords(TWRecordList<TWDictionaryWord>& dictionary, const TWInvocation& invocation)
{
    if (invocation.action == Action::List)
        return listWords(dictionary.saved(), invocation.json);
    if (!std::all_of(invocation.words.begin(), invocation.words.end(), TWText::isValidUTF8))
        return wrongUse(WordNotText);
    std::optional<std::string> absent;
    const auto problem = dictionary.changeSaved([&](DictionaryWords& words) {
        if (invocation.action == Action::Remove)
            absent = absentWord(words, invocation.words);
        if (!absent)
            changeWords(words, invocation);
        return !absent;
    });
    if (!problem)
        return { TWStatus::Failure, "", TWText::fill(NoSuchWord, { TWText::oneLine(*absent) }) };
    return saved(*problem);
}

// ---- files

const char* kindName(std::int64_t kind)
{
    constexpr const char* Names[] = { "item", "contents", "keywords", "keywords-deep" };
    return kind >= 0 && kind < 4 ? Names[kind] : "nothing";
}

std::string ruleLine(const TWFilesRule& rule, std::size_t number, bool json)
{
    if (json) {
        TWJSON::Object object{ { "Active", rule.active }, { "Description", TWText::validUTF8(rule.description) } };
        TWJSON::addBytes(object, "FilePath", "pathBytes", rule.filePath);
        object["WhatToDelete"] = rule.whatToDelete;
        return TWJSON::line(object);
    }
    std::string kind = kindName(rule.whatToDelete);
    kind.resize(14, ' ');
    std::string start = std::to_string(number);
    start.resize(4, ' ');
    return start + (rule.active ? "on   " : "off  ") + kind + TWText::oneLine(rule.filePath)
        + (rule.description.empty() ? "" : "  (" + TWText::oneLine(rule.description) + ")") + "\n";
}

TWCommandResult listRules(const std::vector<TWFilesRule>& rules, bool json)
{
    std::string out;
    for (std::size_t index = 0; index < rules.size(); ++index)
        out += ruleLine(rules[index], index + 1, json);
    return { TWStatus::Success, out, rules.empty() && !json ? NoRules : "" };
}

TWCommandResult addRule(TWTidewellAppDelegate& delegate, const TWInvocation& invocation)
{
    if (invocation.path.empty())
        return wrongUse(NoPath);
    const auto path = TWPath::withoutTrailingSlashes(invocation.path);
    if (!TWText::isValidUTF8(path))
        return { TWStatus::Failure, "", TWText::fill(PathNotText, { TWText::oneLine(path) }) };
    TWFilesRule rule;
    rule.active = !invocation.off;
    rule.description = invocation.description.value_or(std::string(TWPath::lastComponent(path)));
    rule.filePath = delegate.platform().places.abbreviate(path);
    rule.whatToDelete = invocation.whatToDelete;
    const auto problem = delegate.filesWindowController().list().changeSaved([&](auto& rules) {
        rules.push_back(rule);
        return true;
    });
    return saved(*problem);
}

TWCommandResult restoreDefaultRules(TWFilesWindowController& files)
{
    std::string problem;
    const auto defaults = files.defaultRules(problem);
    if (!defaults)
        return saved(problem);
    return saved(*files.list().changeSaved([&](auto& rules) {
        rules = *defaults;
        return true;
    }));
}

TWCommandResult runFiles(TWTidewellAppDelegate& delegate, const TWInvocation& invocation)
{
    auto& files = delegate.filesWindowController();
    if (invocation.action == Action::List)
        return listRules(files.list().saved(), invocation.json);
    if (invocation.action == Action::Add)
        return addRule(delegate, invocation);
    if (invocation.action == Action::Defaults)
        return restoreDefaultRules(files);
    // A number below 1 wraps around to a row that no list has.
    const auto row = static_cast<std::size_t>(invocation.number - std::int64_t(1));
    const auto problem = files.list().changeSavedRow(row, [&](auto& rules, std::size_t at) {
        if (invocation.action == Action::Remove)
            rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(at));
        else
            rules[at].active = invocation.action == Action::On;
    });
    return problem ? saved(*problem) : wrongUse(TWText::fill(NoSuchRule, { std::to_string(invocation.number) }));
}

// The second name of a damaged list that the command has written anew, or "".
std::string keptList(TWTidewellAppDelegate& delegate, TWInvocation::Command command)
{
    if (command == TWInvocation::Command::Words)
        return delegate.dictionaryWindowController().list().keptAs();
    return command == TWInvocation::Command::Files ? delegate.filesWindowController().list().keptAs() : "";
}

}

TWCommandResult TWRunListCommand(TWTidewellAppDelegate& delegate, const TWInvocation& invocation)
{
    const auto before = delegate.problems();
    const auto keptBefore = keptList(delegate, invocation.command);
    TWCommandResult result;
    if (invocation.command == TWInvocation::Command::Settings)
        result = runSettings(delegate, invocation);
    else if (invocation.command == TWInvocation::Command::Words)
        result = runWords(delegate.dictionaryWindowController().list(), invocation);
    else
        result = runFiles(delegate, invocation);
    // Writing a file changes its problem or ends it.
    for (const auto& problem : before)
        result.err += problem + "\n";
    for (const auto& problem : delegate.problems()) {
        if (std::find(before.begin(), before.end(), problem) == before.end())
            result.err += problem + "\n";
    }
    if (const auto kept = keptList(delegate, invocation.command); kept != keptBefore)
        result.err += TWText::fill(KeptAsDamaged, { TWText::oneLine(kept) });
    return result;
}

TWCommandResult TWPrintPaths(
    const TWPlaces& places, const std::string& dataFolder, const std::string& defaultsFile, bool json)
{
    const std::pair<const char*, std::string> rows[] = {
        { "home", places.home },
        { "dataFolder", dataFolder },
        { "defaultsFile", defaultsFile },
        { "trash", places.trash },
        { "systemLogs", places.systemLogs },
        { "resources", places.resources },
        { "rm", places.rm },
        { "srm", places.srm },
        { "eject", places.eject },
    };
    // Folders in which the user's programs keep their logs.
    const std::string userLogs[] = { places.stateHome + "/log", places.dataHome + "/xorg" };
    TWJSON::Object object;
    std::string text;
    for (const auto& [name, path] : rows) {
        object[name] = TWText::validUTF8(path);
        std::string label = name;
        label.resize(14, ' ');
        text += label + TWText::oneLine(path) + "\n";
    }
    object["userLogs"] = TWJSON::Object::array();
    for (const auto& path : userLogs) {
        object["userLogs"].push_back(TWText::validUTF8(path));
        text += "userLogs      " + TWText::oneLine(path) + "\n";
    }
    return printed(json ? TWJSON::line(object) : text);
}
