#pragma once

#include "cleaners/TWCleaner.h"

#include <functional>
#include <utility>

// Records a cleaner's reports as lines; a function is called in each of them.
struct TWRecordingCleanerDelegate final : TWCleanerDelegate {
    std::vector<std::string> lines;
    std::function<std::string(std::string)> shown = [](std::string text) { return text; };
    std::function<void()> onReport = [] {};

    std::vector<std::string> take() { return std::exchange(lines, {}); }
    std::size_t count(std::string_view kind) const
    {
        std::size_t found = 0;
        for (const auto& line : lines)
            found += line.starts_with(kind);
        return found;
    }
    void cleanerStarted(TWCleaner& cleaner) override { add("started: " + cleaner.startedMessageString()); }
    void cleanerFinished(TWCleaner&) override { add("finished"); }
    void cleanerSuccess(TWCleaner& cleaner) override { add("success: " + cleaner.successMessageString()); }
    void cleanerFailure(TWCleaner& cleaner) override { add("failure: " + cleaner.failureMessageString()); }
    void cleanerProgress(TWCleaner& cleaner) override { add("- " + cleaner.progressMessageString()); }

private:
    void add(std::string line)
    {
        lines.push_back(shown(std::move(line)));
        onReport();
    }
};
