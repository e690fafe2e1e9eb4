#pragma once

#include "plist/TWValue.h"
#include "settings/TWKeptEntries.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// One rule of the Recent Items cleaner, as stored in "RecentItemsRules.plist": a preference file of one program, which
// loses the entries with these keys or is deleted as a whole.
struct TWRecentItemsRule {
    static constexpr auto Kind = "a Recent Items rule";

    bool active = true;
    std::string source; // the program's name; also the rule's identity when default rules are merged
    std::string filePath; // may begin with "~"; one folder in it may be "*", for any folder
    bool deleteFile = false;
    std::string keys; // separated by ","; ignored if the whole file is deleted
    TWKeptEntries kept{};

    // Returns nothing if the value is not a dictionary, has no "FilePath" or has an entry of the wrong type. Any other
    // missing entry means inactive, empty or no.
    static std::optional<TWRecentItemsRule> from(TWValue);
    TWValue value() const;

    const std::string& identity() const { return source; }

    // A list can hold any combination of rules.
    static std::string problem(const std::vector<TWRecentItemsRule>&) { return ""; }

    // The names between the commas, without the spaces around them; some may be empty. Nothing if keys is empty.
    std::vector<std::string> keyNames() const;

    friend bool operator==(const TWRecentItemsRule&, const TWRecentItemsRule&) = default;
};

// The editor's own list: shared, not copied, so the cleaner sees the current rules.
using TWRecentItemsRuleList = std::shared_ptr<std::vector<TWRecentItemsRule>>;
