#pragma once

#include "cleaners/TWPlan.h"
#include "cleaners/TWProgress.h"
#include "platform/TWPacedSteps.h"

#include <functional>

class TWCleaner;

// Is told about a cleaner's job, and reads the text of each report from the cleaner during the call. Main thread.
class TWCleanerDelegate {
public:
    virtual void cleanerStarted(TWCleaner&) { }
    virtual void cleanerFinished(TWCleaner&) { } // the job is over, whatever its outcome; the next cleaner may start
    virtual void cleanerSuccess(TWCleaner&) { }
    virtual void cleanerFailure(TWCleaner&) { }
    virtual void cleanerProgress(TWCleaner&) { }

protected:
    ~TWCleanerDelegate() = default;
};

// One of the eight jobs of a run. The owner sets isActive and the concrete cleaner's info, calls validate() and then
// clean(). It then learns about the job only through the delegate: started, any number of progress reports, one success
// or failure, one finished. If the cleaner is inactive, clean() only sends cleanerFinished. The delegate may call every
// operation, or destroy the cleaner, inside its calls. Main thread.
class TWCleaner {
public:
    explicit TWCleaner(TWRunLoop& runLoop)
        : runLoop_(runLoop)
    {
    }
    virtual ~TWCleaner() = default;
    TWCleaner(const TWCleaner&) = delete;
    TWCleaner& operator=(const TWCleaner&) = delete;

    void setDelegate(TWCleanerDelegate* delegate) { delegate_ = delegate; }
    TWCleanerDelegate* delegate() const { return delegate_; }
    bool isActive() const { return isActive_; }
    void setIsActive(bool isActive) { isActive_ = isActive; }
    bool cancelled() const { return cancelled_; }
    void setCancelled(bool cancelled) { cancelled_ = cancelled; }

    const std::string& startedMessageString() const { return startedMessageString_; }
    const std::string& progressMessageString() const { return progressMessageString_; }
    TWTextPart progressPath() const { return progressPath_; } // in the progress message; nothing if it names no path
    const std::string& successMessageString() const { return successMessageString_; }
    const std::string& failureMessageString() const { return failureMessageString_; }
    void setStartedMessageString(std::string text) { startedMessageString_ = std::move(text); }
    void setProgressMessageString(std::string text)
    {
        progressMessageString_ = std::move(text);
        progressPath_ = {};
    }
    void setSuccessMessageString(std::string text) { successMessageString_ = std::move(text); }
    void setFailureMessageString(std::string text) { failureMessageString_ = std::move(text); }

    // Returns a warning for the user if the settings would do harm or nothing, else "". Returns "" for an inactive
    // cleaner.
    virtual std::string validate() { return ""; }

    using PlanGrown = std::function<void(const TWPlan& soFar)>;
    using PlanMade = std::function<void(TWPlan)>;

    // Plans what clean() would do now: copies what it needs, starts no child, writes nothing and asks no question.
    // Calls grown as the plan grows and made once at the end, always on a later turn. Destroying the handle ends the
    // planning without a call. Ignores isActive and a job that is going on.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> makePlan(PlanGrown grown, PlanMade made) const = 0;

    // Starts a job: makes a plan and carries it out. A job that is going on is dropped without further reports.
    void clean();

    // Like clean(), but with a plan that was made before. The job may skip items but never adds any.
    void carryOut(TWPlannedJob);

    // Ends the job as soon as possible: begins nothing further, but checks and reports what was begun. The failure
    // report (with cancelled set) and cleanerFinished follow on a later turn. Does nothing if no job is going on or its
    // outcome is already being reported.
    void stop();

    // If set, the next job also measures what it deletes, in the background, so that progress() and outcome() know
    // sizes. Gives the measuring a short head start.
    void setMeasures(bool measures) { measures_ = measures; }

    // How far the job is; all zeros without one.
    TWProgress progress() const;

    // What the latest job has brought; to be asked when it has succeeded or failed.
    virtual TWOutcome outcome() const { return {}; }

    // True if the text contains any word of the dictionary, ignoring case.
    bool stringContainsKeywords(std::string_view text) const;

protected:
    enum class Outcome { Success, Failure };

    // Carries the plan out and then calls finish(), possibly many turns later. The started report has been made before.
    virtual void perform(TWPlannedJob) = 0;

    // Makes perform() end early: it calls finish() on a later turn. Called at most once per job.
    virtual void stopPerforming() = 0;

    // Drops everything that belongs to the job, without a report.
    virtual void dropJob() = 0;

    // How far perform() is.
    virtual TWProgress performed() const { return {}; }

    // The dictionary's words for the next job.
    virtual std::vector<std::string> wordDictionary() const { return {}; }

    // Reports the lines of a plan from begin to end, a limited number per turn, and then calls the function if the job
    // still goes on.
    void sayLines(std::shared_ptr<const TWPlan>, std::size_t begin, std::size_t end, std::function<void()> then);

    // The same with lines of no plan.
    void sayLines(std::vector<TWReportLine>, std::function<void()> then);

    // Reports the outcome with the given text, or that the job was stopped, and sends cleanerFinished. Also works
    // without a job.
    void finish(Outcome, const std::string& text);

    // Reports at once that the job was terminated, and sends cleanerFinished. The job goes on if there is one.
    void reportTermination();

    bool hasJob() const { return job_ != nullptr; }
    bool measures() const { return measures_; }

    void done();

    void reportProgress(const TWReportLine&);

    // How many items were left out because a preview showed them as refused; empty if there are none.
    static std::vector<TWReportLine> refusedLines(std::uint64_t items);

    // A given text replaces the stored one; without one, the delegate finds the stored text.
    void reportStarted(std::optional<std::string> text = std::nullopt);
    void reportSuccess(std::optional<std::string> text = std::nullopt);
    void reportFailure(std::optional<std::string> text = std::nullopt);

    TWRunLoop& runLoop() const { return runLoop_; }

private:
    enum class Stage { Started, Planning, Performing, Reporting };

    // Exists while a job goes on. An expired weak_ptr shows that a delegate has ended the job or destroyed the cleaner.
    struct Job {
        Stage stage = Stage::Started;
        bool stopping = false;
        std::size_t found = 0; // items, while it plans
        std::unique_ptr<TWRunLoopHandle> planning;
        std::unique_ptr<TWRunLoopHandle> ending; // for a job that was stopped before it performed anything
        std::unique_ptr<TWPacedSteps> saying;
    };

    bool startJob();
    void endJob();
    void startPerforming(TWPlannedJob);
    void report(std::string& field, std::optional<std::string> text, void (TWCleanerDelegate::*operation)(TWCleaner&));

    TWRunLoop& runLoop_;
    TWCleanerDelegate* delegate_ = nullptr;
    bool isActive_ = true;
    bool cancelled_ = false;
    bool measures_ = false;
    std::string startedMessageString_;
    std::string progressMessageString_;
    TWTextPart progressPath_;
    std::string successMessageString_;
    std::string failureMessageString_;
    std::shared_ptr<Job> job_;
};

// The success text of a job from a preview: after it there may be more by now than it showed.
inline constexpr auto TWPreviewSuccessMessage = "Everything that was ticked in the preview is gone.";

// The failure text of a job that was stopped before its end.
inline constexpr auto TWTerminatedMessage = "The cleaner was terminated before its job was finished!";
