#pragma once

#include "app/TWResultsLog.h"
#include "platform/TWRunLoop.h"

#include <thread>
#include <vector>

struct TWColour {
    double red, green, blue;
};

struct TWMessage {
    std::string text; // may hold bytes that are not UTF-8; escaped only for display
    TWMessageType type;
    bool explainsFailure = false; // an information line that says why the cleaner failed

    // The colour of the line's background, which depends on its type.
    TWColour colour() const;
};

class TWResultsView {
public:
    // The list has been emptied.
    virtual void messagesRemoved() = 0;

    // The list has grown to that count, and the last line should be scrolled into view. A failure among the new lines
    // may have changed explainsFailure of earlier lines. Sent at most once per 16 ms, however many lines are added.
    virtual void messagesAdded(std::size_t count) = 0;

protected:
    ~TWResultsView() = default;
};

// The lines of the latest cleaning. A line is in the list at once; the view is told a little later. Main thread, except
// addMessage().
class TWResultsWindowController final : public TWResultsLog {
public:
    explicit TWResultsWindowController(TWRunLoop&);

    void setView(TWResultsView* view) { view_ = view; }

    // A line from another thread is added on a later turn of the event loop, in the order of the calls.
    void addMessage(std::string text, TWMessageType) override;
    void removeAllMessages() override;

    const std::vector<TWMessage>& messages() const { return messages_; }

    // Tells the view at once about lines that it has not been told of.
    void flush();

private:
    void markExplanation();

    TWRunLoop& runLoop_;
    const std::thread::id mainThread_ = std::this_thread::get_id();
    TWResultsView* view_ = nullptr;
    std::vector<TWMessage> messages_;
    std::unique_ptr<TWRunLoopHandle> pending_; // set while the view has not been told of the newest lines
};
