#include "cleaners/TWApplicationsRecord.h"

#include "support/TWPath.h"

#include <iterator>

std::optional<TWApplicationsRecord> TWApplicationsRecord::from(TWValue value)
{
    auto* const entry = value.array();
    if (!entry || entry->empty() || !entry->front().string())
        return std::nullopt;
    TWApplicationsRecord record;
    record.path = std::move(*entry->front().string());
    if (entry->size() == 1)
        return record;
    if (!(*entry)[1].string())
        return std::nullopt;
    record.name = std::move(*(*entry)[1].string());
    record.kept.assign(std::make_move_iterator(entry->begin() + 2), std::make_move_iterator(entry->end()));
    return record;
}

TWValue TWApplicationsRecord::value() const
{
    TWValue::Array entry{ path };
    if (!name.empty() || !kept.empty())
        entry.emplace_back(name);
    entry.insert(entry.end(), kept.begin(), kept.end());
    return entry;
}

std::string TWApplicationsRecord::shownName() const
{
    return name.empty() ? std::string(TWPath::lastComponent(path)) : name;
}
