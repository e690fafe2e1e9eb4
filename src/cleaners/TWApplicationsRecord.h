#pragma once

#include "plist/TWValue.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

// One application that the Applications cleaner quits, as stored in "Applications.plist": an array of its path and its
// name.
struct TWApplicationsRecord {
    static constexpr auto Kind = "an application";

    std::string path; // of the file that describes the application, or of a program; may begin with "~"
    std::string name; // untranslated; "" if the application has none
    TWValue::Array kept{}; // what follows in the array and is not understood

    // Returns nothing if the value is not an array that begins with one or two strings.
    static std::optional<TWApplicationsRecord> from(TWValue);
    TWValue value() const;

    // For messages: the name or, if there is none, the file's.
    std::string shownName() const;

    const std::string& identity() const { return path; }

    // The same application may be in a list several times.
    static std::string problem(const std::vector<TWApplicationsRecord>&) { return ""; }

    friend bool operator==(const TWApplicationsRecord&, const TWApplicationsRecord&) = default;
};

// The editor's own list: shared, not copied, so the cleaner sees the current one.
using TWApplicationsRecordList = std::shared_ptr<std::vector<TWApplicationsRecord>>;
