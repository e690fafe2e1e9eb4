#include "cleaners/TWRecentItemsRule.h"

#include "settings/TWRecordFields.h"

namespace {

constexpr auto Active = "Active";
constexpr auto Source = "Source";
constexpr auto FilePath = "FilePath";
constexpr auto DeleteFile = "DeleteFile";
constexpr auto Keys = "Keys";

std::string withoutSpaces(std::string_view name)
{
    const auto begin = name.find_first_not_of(' ');
    return begin == name.npos ? "" : std::string(name.substr(begin, name.find_last_not_of(' ') + 1 - begin));
}

}

std::optional<TWRecentItemsRule> TWRecentItemsRule::from(TWValue value)
{
    auto* record = value.dictionary();
    TWRecentItemsRule rule;
    std::int64_t active = 0;
    std::int64_t deleteFile = 0;
    if (!record || !record->find(FilePath) || !TWTakeField(*record, FilePath, rule.filePath)
        || !TWTakeField(*record, Source, rule.source) || !TWTakeField(*record, Keys, rule.keys)
        || !TWTakeField(*record, Active, active) || !TWTakeField(*record, DeleteFile, deleteFile))
        return std::nullopt;
    rule.active = active != 0;
    rule.deleteFile = deleteFile != 0;
    rule.kept = TWKeptEntries(std::move(*record), { Active, Source, FilePath, DeleteFile, Keys });
    return rule;
}

TWValue TWRecentItemsRule::value() const
{
    std::vector<TWDictionary::Entry> entries;
    entries.reserve(5);
    entries.emplace_back(Active, active);
    entries.emplace_back(Source, source);
    entries.emplace_back(FilePath, filePath);
    entries.emplace_back(DeleteFile, deleteFile);
    entries.emplace_back(Keys, keys);
    return kept.merged(std::move(entries));
}

std::vector<std::string> TWRecentItemsRule::keyNames() const
{
    std::vector<std::string> names;
    for (std::string_view rest = keys; !keys.empty();) {
        const auto comma = rest.find(',');
        names.push_back(withoutSpaces(rest.substr(0, comma)));
        if (comma == rest.npos)
            break;
        rest.remove_prefix(comma + 1);
    }
    return names;
}
