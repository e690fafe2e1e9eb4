#pragma once

#include <cstdint>
#include <string>

enum class TWMessageType : std::uint8_t { Information = 0, Success = 1, Failure = 2 };

// Where a cleaning reports its lines.
class TWResultsLog {
public:
    virtual void removeAllMessages() = 0;

    // Any thread.
    virtual void addMessage(std::string text, TWMessageType) = 0;

protected:
    ~TWResultsLog() = default;
};
