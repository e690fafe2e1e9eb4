#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

class TWValue;

// A dictionary that keeps its keys in the order in which they were added or read. A lookup is linear, which is fast for
// the small dictionaries of settings. Build large ones with fromEntries() and iterate over entries().
class TWDictionary {
public:
    using Entry = std::pair<std::string, TWValue>;

    // If a key occurs more than once, the last value wins and takes the place of the first. Takes O(n log n) time.
    static TWDictionary fromEntries(std::vector<Entry> entries);

    const TWValue* find(std::string_view key) const;
    TWValue* find(std::string_view key);

    // Replaces the value of the key, or appends the entry if the key is new.
    void set(std::string key, TWValue value);

    // Returns true if the key was there.
    bool remove(std::string_view key);

    std::size_t size() const;
    const std::vector<Entry>& entries() const { return entries_; }
    std::vector<Entry>& entries() { return entries_; }

    // True if both have the same entries in the same order.
    friend bool operator==(const TWDictionary&, const TWDictionary&);

private:
    std::vector<Entry> entries_;
};

// Seconds since 2001-01-01 00:00:00 UTC, the epoch of property lists.
struct TWDate {
    double secondsSince2001 = 0;
    friend bool operator==(const TWDate&, const TWDate&) = default;
};

struct TWData {
    std::string bytes;
    friend bool operator==(const TWData&, const TWData&) = default;
};

// One value of a property list. Destroying, copying and comparing do not recurse on the stack without bound: lists
// nested deeper than TWPropertyList's limit are refused when they are read.
class TWValue {
public:
    using Array = std::vector<TWValue>;

    TWValue(); // boolean false; not "= default" here, where clang would take pairs of it to have no default
    TWValue(bool);
    TWValue(int);
    TWValue(std::int64_t);
    TWValue(double);
    TWValue(const char*);
    TWValue(std::string);
    TWValue(std::string_view);
    TWValue(TWDate);
    TWValue(TWData);
    TWValue(Array);
    TWValue(TWDictionary);
    template <typename T>
    TWValue(T*) = delete; // otherwise any pointer would silently become a boolean

    // Null if the value has another type.
    const bool* boolean() const { return std::get_if<bool>(&value_); }
    const std::int64_t* integer() const { return std::get_if<std::int64_t>(&value_); }
    const double* real() const { return std::get_if<double>(&value_); }
    const std::string* string() const { return std::get_if<std::string>(&value_); }
    std::string* string() { return std::get_if<std::string>(&value_); }
    const TWDate* date() const { return std::get_if<TWDate>(&value_); }
    const TWData* data() const { return std::get_if<TWData>(&value_); }
    TWData* data() { return std::get_if<TWData>(&value_); }
    const Array* array() const { return std::get_if<Array>(&value_); }
    Array* array() { return std::get_if<Array>(&value_); }
    const TWDictionary* dictionary() const { return std::get_if<TWDictionary>(&value_); }
    TWDictionary* dictionary() { return std::get_if<TWDictionary>(&value_); }

    // An integer, or a boolean as 1 or 0: property lists mix the two. Nothing for other types.
    std::optional<std::int64_t> number() const;

    // Equal values have the same type and the same content. Two NaN reals are equal, so that a value equals what is
    // read back after writing it.
    friend bool operator==(const TWValue&, const TWValue&);

private:
    std::variant<bool, std::int64_t, double, std::string, TWDate, TWData, Array, TWDictionary> value_{ false };
};
