#include "cleaners/TWLogsRecord.h"

#include "settings/TWRecordFields.h"

namespace {

constexpr auto Active = "Active";
constexpr auto Item = "Item";
constexpr auto ItemPath = "ItemPath";
constexpr auto Children = "Children";

bool takeChildren(TWDictionary& record, std::optional<std::vector<TWLogsRecord>>& children)
{
    auto* value = record.find(Children);
    if (!value)
        return true;
    auto* values = value->array();
    if (!values)
        return false;
    children.emplace();
    children->reserve(values->size());
    for (auto& each : *values) {
        auto child = TWLogsRecord::from(std::move(each));
        if (!child)
            return false;
        children->push_back(std::move(*child));
    }
    return true;
}

}

// Recursive; a property list is not nested deeper than its reader allows.
std::optional<TWLogsRecord> TWLogsRecord::from(TWValue value)
{
    auto* dictionary = value.dictionary();
    TWLogsRecord record;
    if (!dictionary || !dictionary->find(ItemPath) || !TWTakeField(*dictionary, ItemPath, record.itemPath)
        || !TWTakeField(*dictionary, Item, record.item) || !TWTakeField(*dictionary, Active, record.active)
        || !takeChildren(*dictionary, record.children))
        return std::nullopt;
    record.kept = record.children ? TWKeptEntries(std::move(*dictionary), { Active, Item, ItemPath, Children })
                                  : TWKeptEntries(std::move(*dictionary), { Active, Item, ItemPath });
    return record;
}

TWValue TWLogsRecord::value() const
{
    std::vector<TWDictionary::Entry> entries;
    entries.reserve(4);
    entries.emplace_back(Active, active);
    entries.emplace_back(Item, item);
    entries.emplace_back(ItemPath, itemPath);
    if (children) {
        TWValue::Array values;
        values.reserve(children->size());
        for (const auto& child : *children)
            values.push_back(child.value());
        entries.emplace_back(Children, std::move(values));
    }
    return kept.merged(std::move(entries));
}
