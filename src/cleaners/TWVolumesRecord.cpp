#include "cleaners/TWVolumesRecord.h"

#include "settings/TWRecordFields.h"
#include "support/TWPath.h"

namespace {

constexpr auto Active = "Active";
constexpr auto VolumeName = "VolumeName";
constexpr auto VolumePath = "VolumePath";

}

std::optional<TWVolumesRecord> TWVolumesRecord::from(TWValue value)
{
    auto* const dictionary = value.dictionary();
    TWVolumesRecord record;
    std::int64_t active = 0;
    if (!dictionary || !dictionary->find(VolumePath) || !TWTakeField(*dictionary, VolumePath, record.volumePath)
        || !TWTakeField(*dictionary, VolumeName, record.volumeName) || !TWTakeField(*dictionary, Active, active))
        return std::nullopt;
    record.active = active != 0;
    if (record.volumePath.starts_with('/'))
        record.volumePath = TWPath::standardize(record.volumePath, "");
    record.kept = TWKeptEntries(std::move(*dictionary), { Active, VolumeName, VolumePath });
    return record;
}

std::string TWVolumesRecord::shownName() const
{
    return volumeName.empty() ? std::string(TWPath::lastComponent(volumePath)) : volumeName;
}

TWValue TWVolumesRecord::value() const
{
    std::vector<TWDictionary::Entry> entries;
    entries.reserve(3);
    entries.emplace_back(Active, active);
    entries.emplace_back(VolumeName, volumeName);
    entries.emplace_back(VolumePath, volumePath);
    return kept.merged(std::move(entries));
}
