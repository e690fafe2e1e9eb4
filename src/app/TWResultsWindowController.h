#pragma once

#include "app/TWResultsLog.h"
#include "platform/TWRunLoop.h"

#include <thread>
#include <vector>

struct TWColour {
    double red, green, blue;
};

struct TWMessage {
    std::string text; // may hold bytes that are no UTF-8; escaped only where it is shown
    TWMessageType type;

    // Of the line's background, fixed by its type.
    TWColour colour() const;
};

class TWResultsView {
public:
    // The list was emptied.
    virtual void messagesRemoved() = 0;

    // The list has grown to that count; the last line is to be made visible. Told at most once per 16 ms, however many
    // lines come.
    virtual void messagesAdded(std::size_t count) = 0;

protected:
    ~TWResultsView() = default;
};

// The lines of the latest cleaning. Kept at once; the view follows at its own pace. Main thread, except addMessage().
class TWResultsWindowController final : public TWResultsLog {
public:
    explicit TWResultsWindowController(TWRunLoop&);

    void setView(TWResultsView* view) { view_ = view; }

    // Another thread's line is added on a later turn of the main thread, in the order of the calls.
    void addMessage(std::string text, TWMessageType) override;
    void removeAllMessages() override;

    const std::vector<TWMessage>& messages() const { return messages_; }

    // Tells the view now what it has not been told yet.
    void flush();

private:
    TWRunLoop& runLoop_;
    const std::thread::id mainThread_ = std::this_thread::get_id();
    TWResultsView* view_ = nullptr;
    std::vector<TWMessage> messages_;
    std::unique_ptr<TWRunLoopHandle> pending_; // while the view has not been told of the newest lines
};
