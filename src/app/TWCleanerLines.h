#pragma once

#include "app/TWCleanerTable.h"
#include "cleaners/TWPlanSummary.h"

// The line in each cleaner's row that says what the cleaner would do now. It is found out in the background, one
// cleaner after another. Main thread.
class TWCleanerLines final {
public:
    using Changed = std::function<void(int position, const std::string& line)>;

    TWCleanerLines(const TWCleanerContext&, const TWSettingsSources&, Changed);

    // Finds out all lines anew; what an earlier call is still finding out is dropped.
    void refresh();

    // While a run changes everything, nothing is found out.
    void pause();

private:
    void summarizeNext();
    std::string line(const TWCleanerRow&, const TWPlanSummary&) const;

    TWCleanerContext cleaners_;
    TWSettingsSources sources_;
    const Changed changed_;
    int position_ = 0; // of the cleaner being summarised
    std::unique_ptr<TWPlanSummarizer> summarizer_;
    std::unique_ptr<TWRunLoopHandle> next_;
};
