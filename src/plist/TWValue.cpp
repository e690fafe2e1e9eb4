#include "plist/TWValue.h"

#include <algorithm>
#include <cmath>
#include <numeric>

TWValue::TWValue() = default;

TWValue::TWValue(bool value)
    : value_(value)
{
}

TWValue::TWValue(int value)
    : value_(std::int64_t(value))
{
}

TWValue::TWValue(std::int64_t value)
    : value_(value)
{
}

TWValue::TWValue(double value)
    : value_(value)
{
}

TWValue::TWValue(const char* value)
    : value_(std::string(value))
{
}

TWValue::TWValue(std::string value)
    : value_(std::move(value))
{
}

TWValue::TWValue(std::string_view value)
    : value_(std::string(value))
{
}

TWValue::TWValue(TWDate value)
    : value_(value)
{
}

TWValue::TWValue(TWData value)
    : value_(std::move(value))
{
}

TWValue::TWValue(Array value)
    : value_(std::move(value))
{
}

TWValue::TWValue(TWDictionary value)
    : value_(std::move(value))
{
}

std::optional<std::int64_t> TWValue::number() const
{
    if (const auto* truth = boolean())
        return *truth ? 1 : 0;
    return integer() ? std::optional(*integer()) : std::nullopt;
}

bool operator==(const TWValue& one, const TWValue& other)
{
    const double* left = one.real();
    const double* right = other.real();
    if (left && right && std::isnan(*left) && std::isnan(*right))
        return true;
    return one.value_ == other.value_;
}

bool operator==(const TWDictionary& one, const TWDictionary& other)
{
    return one.entries_ == other.entries_;
}

namespace {

using Entries = std::vector<TWDictionary::Entry>;

// Returns the entries' indexes sorted by key; equal keys keep their order. Sorts instead of hashing, so that no file
// can choose keys that make this quadratic.
std::vector<std::size_t> placesByKey(const Entries& entries)
{
    std::vector<std::size_t> places(entries.size());
    std::iota(places.begin(), places.end(), std::size_t(0));
    std::sort(places.begin(), places.end(), [&](std::size_t left, std::size_t right) {
        const int order = entries[left].first.compare(entries[right].first);
        return order < 0 || (order == 0 && left < right);
    });
    return places;
}

// Moves the last value of each key to the key's first place. Returns, for each entry, whether it is now superfluous.
std::vector<bool> mergeEqualKeys(Entries& entries)
{
    std::vector<bool> leftOver(entries.size());
    const std::vector<std::size_t> places = placesByKey(entries);
    for (std::size_t first = 0; first < places.size();) {
        std::size_t next = first + 1;
        while (next < places.size() && entries[places[next]].first == entries[places[first]].first)
            leftOver[places[next++]] = true;
        if (next - first > 1)
            entries[places[first]].second = std::move(entries[places[next - 1]].second);
        first = next;
    }
    return leftOver;
}

}

TWDictionary TWDictionary::fromEntries(Entries entries)
{
    TWDictionary result;
    result.entries_ = std::move(entries);
    // In most files the keys are sorted, so that there is no need to look for equal ones.
    const auto notAscending = [](const Entry& left, const Entry& right) { return left.first >= right.first; };
    if (std::adjacent_find(result.entries_.begin(), result.entries_.end(), notAscending) == result.entries_.end())
        return result;
    const std::vector<bool> leftOver = mergeEqualKeys(result.entries_);
    std::size_t place = 0; // erase_if visits each entry once, from first to last
    std::erase_if(result.entries_, [&](const Entry&) { return leftOver[place++]; });
    return result;
}

const TWValue* TWDictionary::find(std::string_view key) const
{
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& e) { return e.first == key; });
    return found == entries_.end() ? nullptr : &found->second;
}

TWValue* TWDictionary::find(std::string_view key)
{
    return const_cast<TWValue*>(std::as_const(*this).find(key));
}

void TWDictionary::set(std::string key, TWValue value)
{
    if (TWValue* present = find(key))
        *present = std::move(value);
    else
        entries_.emplace_back(std::move(key), std::move(value));
}

bool TWDictionary::remove(std::string_view key)
{
    return std::erase_if(entries_, [&](const Entry& entry) { return entry.first == key; }) > 0;
}

std::size_t TWDictionary::size() const
{
    return entries_.size();
}
