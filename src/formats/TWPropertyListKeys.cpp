#include "formats/TWPropertyListKeys.h"

#include "plist/TWPropertyList.h"
#include "support/TWText.h"

#include <charconv>
#include <cmath>
#include <string>
#include <vector>

namespace {

template <typename Number>
std::string numberText(Number number)
{
    char text[32];
    return { text, std::to_chars(text, text + sizeof text, number).ptr };
}

std::string dateText(TWDate date)
{
    constexpr double SecondsTo2001 = 978'307'200;
    constexpr double Latest = 253'402'300'800; // the year 10000
    const double seconds = std::floor(date.secondsSince2001 + SecondsTo2001);
    if (!(seconds > -Latest && seconds < Latest))
        return "a date";
    return TWText::utcTime(static_cast<std::time_t>(seconds));
}

std::string scalarText(const TWValue& value)
{
    if (const std::string* string = value.string())
        return *string;
    if (const bool* boolean = value.boolean())
        return *boolean ? "true" : "false";
    if (const std::int64_t* integer = value.integer())
        return numberText(*integer);
    if (const double* real = value.real())
        return numberText(*real);
    if (const TWDate* date = value.date())
        return dateText(*date);
    return TWText::count(value.data()->bytes.size(), "byte", "bytes");
}

// A container of which some items have been reported.
struct Open {
    const TWValue* value;
    std::size_t next = 0;
};

// The next item of a container, of which the name is reported; null after the last one.
const TWValue* takeNext(Open& open, TWKeyCollector& collector)
{
    if (const TWValue::Array* items = open.value->array())
        return open.next < items->size() ? &(*items)[open.next++] : nullptr;
    const auto& entries = open.value->dictionary()->entries();
    if (open.next == entries.size())
        return nullptr;
    collector.name(entries[open.next].first);
    return &entries[open.next++].second;
}

}

void TWPropertyListKeys::report(std::string_view bytes, TWKeyCollector& collector)
{
    const auto root = TWPropertyList::read(bytes).value;
    if (!root || !root->dictionary())
        return;
    std::vector<Open> open{ { &*root } };
    while (!open.empty()) {
        const TWValue* item = takeNext(open.back(), collector);
        if (!item) {
            collector.end();
            open.pop_back();
        } else if (item->array() || item->dictionary()) {
            collector.begin(item->dictionary());
            open.push_back({ item });
        } else {
            collector.value(scalarText(*item));
        }
    }
}
