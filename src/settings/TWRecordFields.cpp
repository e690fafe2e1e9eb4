#include "settings/TWRecordFields.h"

bool TWTakeField(TWDictionary& record, const char* key, std::string& text)
{
    auto* value = record.find(key);
    if (value && value->string())
        text = std::move(*value->string());
    return !value || value->string();
}

bool TWTakeField(const TWDictionary& record, const char* key, std::int64_t& number)
{
    const auto* value = record.find(key);
    if (!value)
        return true;
    const auto found = value->number();
    number = found.value_or(0);
    return found.has_value();
}
