#pragma once

#include <cstdint>
#include <string>

enum class TWMessageType : std::uint8_t { Information = 0, Success = 1, Failure = 2 };

// Begins every line about a cleaner's progress.
inline constexpr auto TWProgressMark = "  \xE2\x80\xA2 ";

// Receives the lines of a cleaning. Main thread, except addMessage().
class TWResultsLog {
public:
    virtual void removeAllMessages() = 0;

    // Any thread.
    virtual void addMessage(std::string text, TWMessageType) = 0;

protected:
    ~TWResultsLog() = default;
};
