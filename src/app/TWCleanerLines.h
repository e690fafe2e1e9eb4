#pragma once

#include "app/TWCleanerTable.h"
#include "cleaners/TWPlanSummary.h"

// Determines, for each cleaner's row, the line that says what the cleaner would do now. It plans the cleaners in the
// background, one after another. Main thread.
class TWCleanerLines final {
public:
    using Changed = std::function<void(int position, const std::string& line)>;

    TWCleanerLines(const TWCleanerContext&, const TWSettingsSources&, Changed);

    // Determines all lines anew, on later turns. Drops what an earlier call is still determining.
    void refresh();

    // Stops until the next refresh(), because a run changes everything.
    void pause();

private:
    void summarizeNext();
    std::string line(const TWCleanerRow&, const TWPlanSummary&) const;

    TWCleanerContext cleaners_;
    TWSettingsSources sources_;
    const Changed changed_;
    int position_ = 0; // of the cleaner being planned
    std::unique_ptr<TWPlanSummarizer> summarizer_;
    std::unique_ptr<TWRunLoopHandle> next_;
};
