#include "cleaners/TWFilesRule.h"

#include "settings/TWRecordFields.h"

namespace {

constexpr auto Active = "Active";
constexpr auto Description = "Description";
constexpr auto FilePath = "FilePath";
constexpr auto WhatToDelete = "WhatToDelete";

}

std::optional<TWFilesRule> TWFilesRule::from(TWValue value)
{
    auto* record = value.dictionary();
    TWFilesRule rule;
    std::int64_t active = 0;
    if (!record || !record->find(FilePath) || !TWTakeField(*record, FilePath, rule.filePath)
        || !TWTakeField(*record, Description, rule.description) || !TWTakeField(*record, Active, active)
        || !TWTakeField(*record, WhatToDelete, rule.whatToDelete))
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
