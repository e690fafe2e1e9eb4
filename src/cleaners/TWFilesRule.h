#pragma once

#include "plist/TWValue.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// What a rule deletes at its path; other numbers are possible in a file and delete nothing.
enum TWWhatToDelete : std::int32_t {
    TWItemItself = 0,
    TWFolderContents = 1,
    TWItemsWithKeywords = 2,
    TWItemsWithKeywordsDeep = 3,
};

// One rule of the Files cleaner, as stored in "FilesRules.plist".
struct TWFilesRule {
    bool active = true;
    std::string description; // the name shown to the user
    std::string filePath; // may begin with "~"; also the rule's identity when default rules are merged
    std::int32_t whatToDelete = TWItemItself;

    bool needsKeywords() const
    {
        return whatToDelete == TWItemsWithKeywords || whatToDelete == TWItemsWithKeywordsDeep;
    }

    TWValue value() const;

    // Nothing when it is no dictionary or an entry has the wrong type. A missing entry reads as inactive, empty or 0.
    static std::optional<TWFilesRule> from(const TWValue&);

    // Nothing, and the number of the first bad record counted from 1, when one of the records is no rule.
    static std::optional<std::vector<TWFilesRule>> listFrom(const TWValue::Array&, std::size_t& badRecord);

    friend bool operator==(const TWFilesRule&, const TWFilesRule&) = default;
};

// The editor's own list, shared and not copied: it is live.
using TWFilesRuleList = std::shared_ptr<std::vector<TWFilesRule>>;
