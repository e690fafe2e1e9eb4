#pragma once

#include "plist/TWValue.h"
#include "settings/TWKeptEntries.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// One volume, as stored in "Volumes.plist".
struct TWVolumesRecord {
    static constexpr auto Kind = "a volume";

    bool active = false; // the Volumes cleaner unmounts it
    std::string volumeName; // for messages: the last part of the path
    std::string volumePath; // of the mount point, absolute, without superfluous slashes
    TWKeptEntries kept{};

    // Returns nothing if the value is not a dictionary, has no "VolumePath" or has an entry of the wrong type.
    static std::optional<TWVolumesRecord> from(TWValue);
    TWValue value() const;

    // The name, or else the last part of the path.
    std::string shownName() const;

    const std::string& identity() const { return volumePath; }

    // A list can hold any combination of volumes.
    static std::string problem(const std::vector<TWVolumesRecord>&) { return ""; }

    friend bool operator==(const TWVolumesRecord&, const TWVolumesRecord&) = default;
};

// The editor's own list: shared, not copied, so the cleaner sees the current one.
using TWVolumesRecordList = std::shared_ptr<std::vector<TWVolumesRecord>>;
