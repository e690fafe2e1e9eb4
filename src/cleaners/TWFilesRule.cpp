#include "cleaners/TWFilesRule.h"

namespace {

constexpr auto Active = "Active";
constexpr auto Description = "Description";
constexpr auto FilePath = "FilePath";
constexpr auto WhatToDelete = "WhatToDelete";

// Both return false if the entry exists with another type.
bool take(TWDictionary& record, const char* key, std::string& text)
{
    auto* value = record.find(key);
    if (value && value->string())
        text = std::move(*value->string());
    return !value || value->string();
}

bool take(const TWDictionary& record, const char* key, std::int64_t& number)
{
    const auto* value = record.find(key);
    if (!value)
        return true;
    const auto found = value->number();
    number = found.value_or(0);
    return found.has_value();
}

}

std::optional<TWFilesRule> TWFilesRule::from(TWValue value)
{
    auto* record = value.dictionary();
    TWFilesRule rule;
    std::int64_t active = 0;
    if (!record || !record->find(FilePath) || !take(*record, FilePath, rule.filePath)
        || !take(*record, Description, rule.description) || !take(*record, Active, active)
        || !take(*record, WhatToDelete, rule.whatToDelete))
        return std::nullopt;
    rule.active = active != 0;
    rule.kept = TWKeptEntries(std::move(*record), { Active, Description, FilePath, WhatToDelete });
    return rule;
}

TWValue TWFilesRule::value() const
{
    std::vector<TWDictionary::Entry> entries;
    entries.reserve(4);
    entries.emplace_back(Active, active);
    entries.emplace_back(Description, description);
    entries.emplace_back(FilePath, filePath);
    entries.emplace_back(WhatToDelete, whatToDelete);
    return kept.merged(std::move(entries));
}
