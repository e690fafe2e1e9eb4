#pragma once

#include "plist/TWValue.h"

#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

// The entries of a record that this version does not understand. They survive reading, editing and writing, each in its
// place. Copies share them, and a record without such entries takes no memory for them.
class TWKeptEntries final {
public:
    TWKeptEntries() = default;

    // Keeps the entries whose keys are none of these. At most 100 keys.
    TWKeptEntries(TWDictionary record, std::initializer_list<std::string_view> understood);

    // The understood entries as they are now, one for each key and in the order of the constructor's, with the kept
    // ones in their places.
    TWDictionary merged(std::vector<TWDictionary::Entry> understood) const;

    friend bool operator==(const TWKeptEntries&, const TWKeptEntries&);

private:
    struct Kept {
        std::string order; // for each key of the record its place among the understood ones, or NotUnderstood
        std::vector<TWDictionary::Entry> entries;
        friend bool operator==(const Kept&, const Kept&) = default;
    };
    static constexpr char NotUnderstood = 127;

    std::shared_ptr<const Kept> kept_; // nullptr if there are none
};
