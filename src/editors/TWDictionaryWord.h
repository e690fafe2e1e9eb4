#pragma once

#include "plist/TWValue.h"

#include <optional>
#include <string>
#include <vector>

// One word of the keyword dictionary, as stored in "Dictionary.plist": a data item of its UTF-8.
struct TWDictionaryWord {
    static constexpr auto Kind = "a word";

    std::string text;

    // Returns nothing unless the value is data with valid UTF-8.
    static std::optional<TWDictionaryWord> from(TWValue);
    TWValue value() const { return TWData{ text }; }

    const std::string& identity() const { return text; }

    // Returns a short clause if the words are too long together, else "".
    static std::string problem(const std::vector<TWDictionaryWord>&);

    friend bool operator==(const TWDictionaryWord&, const TWDictionaryWord&) = default;
};
