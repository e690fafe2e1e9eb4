#pragma once

#include "plist/TWValue.h"
#include "settings/TWKeptEntries.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// What a rule deletes at its path. A file may hold other numbers, which delete nothing.
enum TWWhatToDelete : std::int64_t {
    TWItemItself = 0,
    TWFolderContents = 1,
    TWItemsWithKeywords = 2,
    TWItemsWithKeywordsDeep = 3,
};

// One rule of the Files cleaner, as stored in "FilesRules.plist".
struct TWFilesRule {
    static constexpr auto Kind = "a Files rule";

    bool active = true;
    std::string description; // the name shown to the user
    std::string filePath; // may begin with "~"; also the rule's identity when default rules are merged
    std::int64_t whatToDelete = TWItemItself;
    TWKeptEntries kept{};

    bool needsKeywords() const
    {
        return whatToDelete == TWItemsWithKeywords || whatToDelete == TWItemsWithKeywordsDeep;
    }

    // Returns nothing if the value is not a dictionary, has no "FilePath" or has an entry of the wrong type. A missing
    // entry means inactive, empty or 0.
    static std::optional<TWFilesRule> from(TWValue);
    TWValue value() const;

    const std::string& identity() const { return filePath; }

    // A list can hold any combination of rules.
    static std::string problem(const std::vector<TWFilesRule>&) { return ""; }

    friend bool operator==(const TWFilesRule&, const TWFilesRule&) = default;
};

// The editor's own list: shared, not copied, so the cleaner sees the current rules.
using TWFilesRuleList = std::shared_ptr<std::vector<TWFilesRule>>;
