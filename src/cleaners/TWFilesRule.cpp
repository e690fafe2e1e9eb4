#include "cleaners/TWFilesRule.h"

namespace {

constexpr auto Active = "Active";
constexpr auto Description = "Description";
constexpr auto FilePath = "FilePath";
constexpr auto WhatToDelete = "WhatToDelete";

// False when the entry is there with another type.
bool take(const TWDictionary& record, const char* key, std::string& text)
{
    const auto* value = record.find(key);
    if (value && value->string())
        text = *value->string();
    return !value || value->string();
}

bool take(const TWDictionary& record, const char* key, std::int64_t& number)
{
    const auto* value = record.find(key);
    if (!value)
        return true;
    if (value->boolean())
        number = *value->boolean();
    else if (value->integer())
        number = *value->integer();
    return value->boolean() || value->integer();
}

}

TWValue TWFilesRule::value() const
{
    TWDictionary record;
    record.set(Active, active);
    record.set(Description, description);
    record.set(FilePath, filePath);
    record.set(WhatToDelete, std::int64_t(whatToDelete));
    return record;
}

std::optional<TWFilesRule> TWFilesRule::from(const TWValue& value)
{
    const auto* record = value.dictionary();
    TWFilesRule rule;
    std::int64_t active = 0;
    std::int64_t kind = 0;
    if (!record || !take(*record, Active, active) || !take(*record, Description, rule.description)
        || !take(*record, FilePath, rule.filePath) || !take(*record, WhatToDelete, kind))
        return std::nullopt;
    rule.active = active != 0;
    // A number too large for us must not wrap round to one that deletes something.
    rule.whatToDelete = kind >= 0 && kind <= INT32_MAX ? static_cast<std::int32_t>(kind) : -1;
    return rule;
}

std::optional<std::vector<TWFilesRule>> TWFilesRule::listFrom(const TWValue::Array& records, std::size_t& badRecord)
{
    std::vector<TWFilesRule> rules;
    for (const auto& record : records) {
        auto rule = from(record);
        if (!rule) {
            badRecord = rules.size() + 1;
            return std::nullopt;
        }
        rules.push_back(std::move(*rule));
    }
    return rules;
}
