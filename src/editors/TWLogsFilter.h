#pragma once

#include "editors/TWLogsTree.h"
#include "platform/TWRunLoop.h"
#include "support/TWKeywordMatcher.h"

// Finds the nodes of the logs tree whose names contain a text, with everything above and below them, and marks them as
// shown. Works on the main thread, a little per turn of the event loop.
class TWLogsFilter final {
public:
    TWLogsFilter(TWRunLoop&, const std::string& text, std::function<void()> done);

    // Marks fresh nodes by their own names, so that hardly any are shown by mistake until the filter has seen them.
    // All are shown for the text "". Any thread.
    static void mark(const TWLogsTree::Level&, const std::string& text);

    // Begins anew. The tree must not change before the call of done, or the next start() or stop().
    void start(TWLogsTree&);
    void stop();
    bool isWorking() const { return turn_ != nullptr; }

private:
    // The next node of a level, and whether everything there is shown because of what is above.
    struct Place {
        const TWLogsTree::Level* level;
        std::size_t row;
        bool isInside;
    };

    void takeTurn();
    void visit();

    TWRunLoop& runLoop_;
    const TWKeywordMatcher matcher_;
    const std::function<void()> done_;
    std::vector<Place> places_; // the outermost first
    std::unique_ptr<TWRunLoopHandle> turn_;
};
