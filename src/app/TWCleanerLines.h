#pragma once

#include "app/TWCleanerTable.h"
#include "cleaners/TWPlanSummary.h"

#include <deque>

// Determines, for each cleaner's row, the line that says what the cleaner would do now. It plans the cleaners in the
// background, one after another, and plans one again when the folder that its row watches has changed: it looks at that
// folder, without listing it, every two seconds. Plans all of them again now and then, so rarely that this takes a
// fiftieth of the time. Main thread.
class TWCleanerLines final {
public:
    using Changed = std::function<void(int position, const std::string& line)>;

    // What a run of several cleaners would do now.
    struct Sum {
        TWPlanSummary numbers;
        std::uint64_t warnings = 0; // cleaners that warn, would fail, could not read something or would refuse items

        // "512 items, 3.4 GB, 2 warnings"
        std::string text() const;
    };

    TWCleanerLines(const TWCleanerContext&, const TWSettingsSources&, Changed);

    // Determines all lines anew, on later turns. Drops what an earlier call is still determining.
    void refresh();

    // Nothing while one of the chosen cleaners has no line yet.
    std::optional<Sum> sum(const std::array<bool, TWCleanerCount>& chosen) const;

    // Stops until the next refresh(), because a run changes everything.
    void pause();

private:
    void begin();
    void summarizeNext();
    void beginAgainLater();
    void summarize(int position);
    void watch();
    TWFileLook lookAtWatched(int position) const;
    std::string line(const TWCleanerRow&, const TWPlanSummary&) const;

    TWCleanerContext cleaners_;
    TWSettingsSources sources_;
    const Changed changed_;
    std::deque<int> waiting_; // the positions of the cleaners to be planned
    std::array<TWFileLook, TWCleanerCount> watched_; // the folders as they were before the latest plans
    std::array<std::optional<Sum>, TWCleanerCount> sums_; // of the lines that are shown
    std::unique_ptr<TWPlanSummarizer> summarizer_;
    std::unique_ptr<TWRunLoopHandle> next_;
    std::unique_ptr<TWRunLoopHandle> watching_;
    TWRunLoop::Clock::time_point begun_; // the latest planning of all cleaners
    std::unique_ptr<TWRunLoopHandle> again_;
};
