#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// One entry of the keep list: what is never deleted, whatever a rule or a switch says.
struct TWKeepEntry {
    enum class Kind : std::uint8_t {
        Path, // the file or folder at the path; what lies in the folder may be deleted
        FolderWithContents, // the folder at the path with everything in it
        Names, // everything with a name like the pattern, wherever it is, with everything in it
    };

    Kind kind = Kind::Path;
    std::string text; // the path as the user wrote it, which may begin with "~", or the pattern (see TWNamePattern)

    // Returns a short clause why the entry keeps nothing, such as "has no path", or "".
    std::string mistake() const;

    // Returns a short clause why the entry may not keep what the user means, or "".
    std::string doubt() const;

    friend bool operator==(const TWKeepEntry&, const TWKeepEntry&) = default;
};

// Nothing if the keep list could not be read. Then nothing may be deleted.
using TWKeepList = std::optional<std::vector<TWKeepEntry>>;
