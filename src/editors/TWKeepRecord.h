#pragma once

#include "deletion/TWKeepEntry.h"
#include "settings/TWKeptEntries.h"

// One entry of the keep list, as stored in "KeepList.plist": "Path" and "Inside" (true for a folder with everything in
// it), or "Pattern".
class TWKeepRecord final {
public:
    static constexpr auto Kind = "an entry of a keep list";

    explicit TWKeepRecord(TWKeepEntry entry)
        : entry_(std::move(entry))
    {
    }

    const TWKeepEntry& entry() const { return entry_; }

    // Keeps what is not understood, unless a path becomes a pattern or the reverse.
    void setEntry(TWKeepEntry);

    // Returns nothing if the value is not a dictionary with either "Path" or "Pattern", or has an entry of the wrong
    // type.
    static std::optional<TWKeepRecord> from(TWValue);
    TWValue value() const;

    const std::string& identity() const { return entry_.text; }

    // Returns a short clause about the first entry that keeps nothing, else "".
    static std::string problem(const std::vector<TWKeepRecord>&);

    friend bool operator==(const TWKeepRecord&, const TWKeepRecord&) = default;

private:
    TWKeepEntry entry_;
    TWKeptEntries kept_;
};
