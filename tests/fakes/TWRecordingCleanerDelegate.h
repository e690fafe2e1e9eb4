#pragma once

#include "cleaners/TWCleaner.h"
#include "fakes/TWFakeMachine.h"

// Records a cleaner's reports as lines; a function is called in each of them.
struct TWRecordingCleanerDelegate final : TWCleanerDelegate {
    Lines lines;
    std::function<std::string(std::string)> shown = [](std::string text) { return text; };
    std::function<void()> onReport = [] {};

    Lines take() { return std::exchange(lines, {}); }
    std::size_t count(std::string_view kind) const
    {
        return std::ranges::count_if(lines, [kind](const auto& line) { return line.starts_with(kind); });
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

// An empty plan if planning has not ended when nothing is waiting any more.
inline TWPlan TWPlanOf(const TWCleaner& cleaner, TWFakeRunLoop& runLoop)
{
    TWPlan plan;
    const auto planning = cleaner.makePlan([](const TWPlan&) {}, [&](TWPlan made) { plan = std::move(made); });
    runLoop.runUntilIdle();
    return plan;
}

// A machine with one cleaner whose reports are recorded.
template <typename Cleaner>
class TWCleanerTest : public testing::Test, protected TWFakeMachine {
protected:
    TWCleanerTest()
    {
        cleaner.setDelegate(&reports);
        reports.shown = [this](std::string text) { return launcher.shown(std::move(text)); };
    }
    Lines run()
    {
        cleaner.clean();
        runLoop.advance(1s);
        return reports.take();
    }

    Cleaner cleaner{ { tools, settings, programs, logs, workspace, volumes } };
    TWRecordingCleanerDelegate reports;
};
