#pragma once

#include "cleaners/TWApplicationsRecord.h"
#include "cleaners/TWCleaner.h"
#include "cleaners/TWCleanerContext.h"
#include "platform/TWBackgroundStream.h"

#include <optional>

struct TWApplicationsCleanerInfo {
    TWApplicationsRecordList applicationsArray; // the editor's live list; nullptr counts as empty
    bool forceQuit = false; // ends what still runs at the time-out
    std::int32_t timeout = 0; // how long to wait for the applications to quit, in seconds
    std::vector<std::string> problems; // of lists that could not be read; with any, the job cannot succeed
};

// Asks the running copies of the applications in the list to quit, waits until they are gone, and after the time-out
// ends them or reports them. Main thread.
class TWApplicationsCleaner final : public TWCleaner {
public:
    explicit TWApplicationsCleaner(const TWCleanerContext&);

    void setInfo(TWApplicationsCleanerInfo info) { info_ = std::move(info); }
    const TWApplicationsCleanerInfo& info() const { return info_; }

    std::string validate() override;
    std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown, PlanMade) const override;
    TWOutcome outcome() const override { return outcome_; }

private:
    // An application to be quit.
    struct Listed {
        std::string path; // absolute
        std::string name;
        std::optional<TWRunningCopy> only{}; // of its copies, if a preview has named one
    };
    struct PlannedList;
    // A running copy, and the name under which it is quit.
    struct Match {
        TWRunningCopy copy;
        std::string name;
    };
    // Nothing if nobody knows what runs.
    using Matches = std::optional<std::vector<Match>>;
    // Acts on a copy and returns what is to be reported. On another thread.
    using Act = std::vector<std::string> (*)(TWRunningCopies&, const Match&);

    void perform(TWPlannedJob) override;
    void stopPerforming() override;
    void dropJob() override;
    TWProgress performed() const override;

    std::vector<Listed> listed() const;
    std::vector<Listed> listedInPlan() const;
    std::vector<Listed> tickedInPreview() const;
    static std::vector<std::string> pathsOf(const std::vector<Listed>&);
    static Matches find(TWRunningCopies&, const std::vector<Listed>&, const TWCancellation&);
    static std::vector<std::string> askToQuit(TWRunningCopies&, const Match&);
    static std::vector<std::string> forceToQuit(TWRunningCopies&, const Match&);
    bool isFromPreview() const { return job_.check != nullptr; }

    void look(std::function<void(const Matches&)> then);
    void askAll(const Matches&);
    std::vector<Match> planned(const std::vector<Match>&) const;
    std::vector<TWReportLine> endedSincePreview(const std::vector<Match>&) const;
    void actOn(std::vector<Match>, Act, std::function<void()> then);
    void startWaiting();
    void checkForTermination();
    void check(const Matches&);
    void timedOut(const std::vector<Match>&);
    void cannotTell();
    void end(Outcome);
    std::string brought() const;

    const TWCleanerContext context_;
    TWApplicationsCleanerInfo info_;
    TWOutcome outcome_;

    // Of the latest job.
    TWPlannedJob job_;
    std::shared_ptr<const std::vector<Listed>> listed_;
    bool forceQuit_ = false;
    std::chrono::seconds timeout_{ 0 };
    std::shared_ptr<TWRunningCopies> copies_;
    Matches found_; // by the look that is going on
    std::size_t asked_ = 0; // copies
    std::size_t running_ = 0; // at the latest look
    TWRunLoop::Clock::time_point startDate_; // when the copies were asked
    std::unique_ptr<TWRunLoopHandle> timer_;
    std::unique_ptr<TWBackgroundStream<Matches>> looking_;
    std::unique_ptr<TWBackgroundStream<std::string>> acting_;
    std::unique_ptr<TWRunLoopHandle> ending_; // of a job that was stopped
};
