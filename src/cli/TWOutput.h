#pragma once

#include "platform/TWRunLoop.h"

#include <string>

// Writes the text to standard output and waits for its reader. If it could not be written completely, reports that on
// standard error and returns false.
bool TWWriteToOutput(std::string_view);

// Writes to standard output without waiting for a reader that stands still, so that the command can be interrupted
// meanwhile. Main thread.
class TWOutput final {
public:
    // Calls ready, on a later turn, when a text that had to wait has been written or can never be.
    TWOutput(TWRunLoop&, std::function<void()> ready);

    // Call this only while isReady(). What the reader does not take at once follows on later turns. After a failure,
    // which is reported once, does nothing.
    void write(std::string text);

    // False while some text waits for the reader.
    bool isReady() const { return waiting_.empty(); }

    // How many lines wait, a line of which a part has been written included.
    std::size_t waitingLines() const;

    bool failed() const { return failed_; }

private:
    std::string_view pieceAt(std::size_t begin) const;
    void writeSome();

    TWRunLoop& runLoop_;
    const std::function<void()> ready_;
    const std::size_t atOnce_; // bytes that can be written without waiting when poll() says so
    bool failed_ = false;
    std::string waiting_;
    std::unique_ptr<TWRunLoopHandle> next_;
};
