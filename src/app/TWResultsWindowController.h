#pragma once

#include "app/TWCleanerTable.h"
#include "app/TWResultsLog.h"
#include "platform/TWRunLoop.h"

#include <thread>
#include <vector>

// How many lines of a cleaner there are.
struct TWLineCount {
    std::size_t lines = 0;
    std::size_t failures = 0;

    friend bool operator==(const TWLineCount&, const TWLineCount&) = default;
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
    void addMessage(TWMessage) override;
    void removeAllMessages() override;

    const std::vector<TWMessage>& messages() const { return messages_; }

    // The positions of the failures in messages(), ascending.
    const std::vector<std::size_t>& failures() const { return failures_; }

    // The position of the first of the lines directly before a failure that explain it; that of the failure if none do.
    std::size_t firstExplanation(std::size_t failure) const;

    // The lines of the cleaner at that position in TWCleanerTable.
    const TWLineCount& count(int cleaner) const { return counts_[static_cast<std::size_t>(cleaner)]; }

    // Tells the view at once about lines that it has not been told of.
    void flush();

private:
    void markExplanation();

    TWRunLoop& runLoop_;
    const std::thread::id mainThread_ = std::this_thread::get_id();
    TWResultsView* view_ = nullptr;
    std::vector<TWMessage> messages_;
    std::vector<std::size_t> failures_;
    std::array<TWLineCount, TWCleanerCount> counts_{};
    std::unique_ptr<TWRunLoopHandle> pending_; // set while the view has not been told of the newest lines
};
