#pragma once

#include "support/TWReportLine.h"

#include <cstdint>
#include <string>

enum class TWMessageType : std::uint8_t { Information = 0, Success = 1, Failure = 2 };

// Begins every line about a cleaner's progress.
inline constexpr std::string_view TWProgressMark = "  \xE2\x80\xA2 ";

// Instead of the position of a cleaner: the line belongs to the run itself.
inline constexpr int TWNoCleaner = -1;

struct TWColour {
    double red, green, blue;
};

// A line of the results. Kept small, because there can be a million of them.
struct TWMessage {
    std::string text; // may hold bytes that are not UTF-8; escaped only for display
    TWMessageType type;
    bool explainsFailure = false; // an information line that says why the cleaner failed
    std::int16_t cleaner = TWNoCleaner; // position in TWCleanerTable
    TWTextPart path = {}; // the path that the line is about; nothing if it names none

    // The colour of the line's background, which depends on its type.
    TWColour colour() const;

    // "" if the line names no path.
    std::string namedPath() const { return std::string(path.of(text)); }
};

static_assert(sizeof(TWMessage) <= sizeof(std::string) + 8);

// Receives the lines of a cleaning. Main thread, except addMessage().
class TWResultsLog {
public:
    virtual void removeAllMessages() = 0;

    // Any thread.
    virtual void addMessage(TWMessage) = 0;

protected:
    ~TWResultsLog() = default;
};
