#pragma once

#include "plist/TWValue.h"
#include "settings/TWKeptEntries.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The paths of the two roots of the logs tree, which are no paths.
inline constexpr std::string_view TWAllUserLogs = "ALL_USER_LOGS";
inline constexpr std::string_view TWAllSystemLogs = "ALL_SYSTEM_LOGS";

// The check state of a log. A file may hold other numbers, which choose nothing and are kept.
enum TWLogState : std::int64_t {
    TWLogUnchecked = 0,
    TWLogChecked = 1,
    TWLogMixed = -1, // not checked itself, but something below it is
};

// One chosen log or log folder, with what is chosen below it, as stored in "Logs.plist". The file holds only what is
// checked or mixed.
struct TWLogsRecord {
    static constexpr auto Kind = "a log";

    std::string item; // the name shown
    std::string itemPath; // may begin with "~"; one of the two tokens for a root
    std::int64_t active = TWLogUnchecked;
    std::optional<std::vector<TWLogsRecord>> children; // set if it was a folder when it was scanned
    TWKeptEntries kept{};

    // Returns nothing if the value is not a dictionary, has no "ItemPath" or has an entry of the wrong type. A missing
    // entry means unchecked or an empty name.
    static std::optional<TWLogsRecord> from(TWValue);
    TWValue value() const;

    const std::string& identity() const { return itemPath; }

    // A tree can hold any combination of logs.
    static std::string problem(const std::vector<TWLogsRecord>&) { return ""; }

    friend bool operator==(const TWLogsRecord&, const TWLogsRecord&) = default;
};

// The editor's own list: shared, not copied, so the cleaner sees the current choices.
using TWLogsRecordList = std::shared_ptr<std::vector<TWLogsRecord>>;
