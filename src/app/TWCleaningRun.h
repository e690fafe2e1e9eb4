#pragma once

#include "app/TWApplicationWindows.h"
#include "app/TWCleanerTable.h"
#include "app/TWResultsLog.h"
#include "app/TWRunView.h"
#include "platform/TWAlerts.h"
#include "platform/TWLock.h"
#include "platform/TWNotifier.h"

#include <algorithm>

// The cleaners that take part in a run, by position.
using TWRunChoice = std::array<bool, TWCleanerCount>;

inline bool TWIsAnyChosen(const TWRunChoice& choice)
{
    return std::ranges::find(choice, true) != choice.end();
}

// What a run of plans carries out, by position. A cleaner without a plan does not take part.
using TWPlannedJobs = std::array<TWPlannedJob, TWCleanerCount>;

// Gives the jobs as they are now; nothing if there are none any more.
using TWPlannedJobsSource = std::function<std::optional<TWPlannedJobs>()>;

// One press of Clean, from the warnings to the closing line. It owns its cleaners, the question and the lock.
// Destroying it ends it, with its child process, without a further call. Main thread.
class TWCleaningRun final : private TWCleanerDelegate {
public:
    // What happens after the last cleaner.
    enum class Ending {
        AsSettingsSay, // shows results, notifies, quits or asks for attention, as the settings say
        OfCommand, // only notifies, and the notification cannot be clicked
    };

    struct Context {
        TWAlerts& alerts;
        TWNotifier& notifier;
        const TWSettings& settings;
        TWCleanerContext cleaners;
        TWSettingsSources sources;
        TWResultsLog& results;
        TWRunView& view;
        TWApplicationWindows& windows;
    };

    // With a source of jobs, every cleaner that takes part carries out its job; without (nullptr), it makes its plan
    // when its turn comes. The source is asked again after the user has confirmed the warnings, because the user may
    // have changed the jobs in the meantime; a cleaner that had none at first still takes no part.
    // problems are lines about settings and lists that could not be read; warning is a text that the user must confirm,
    // or "". ended is called once, as the last call, unless the run is destroyed before.
    TWCleaningRun(const Context&, const TWRunChoice&, TWPlannedJobsSource jobs, Ending, std::shared_ptr<TWHeldLock>,
        std::vector<std::string> problems, std::string warning, std::function<void(TWRunOutcome)> ended);
    ~TWCleaningRun();

    // Clears the results, asks the user to confirm the warnings if there are any, and runs the cleaners.
    void start();

    // Asks first and shows nothing until the warnings are confirmed. Then calls replace, which must end the run that
    // has been going on, and starts. If the warnings are not confirmed, calls ended with NothingRun.
    void startInPlace(std::function<void()> replace);

    // Called once when the warnings are confirmed and the first cleaner is about to run.
    void setBegan(std::function<void()> began) { began_ = std::move(began); }

    // Ends the run: begins nothing further, ends and checks what was begun, and reports the closing line.
    void stop();

    // True while the warnings wait for an answer.
    bool asking() const { return asking_; }

    // True from the confirmation of the warnings to the end.
    bool running() const { return running_; }
    const std::shared_ptr<TWHeldLock>& lock() const { return lock_; }

private:
    void cleanerStarted(TWCleaner&) override;
    void cleanerFinished(TWCleaner&) override;
    void cleanerSuccess(TWCleaner&) override;
    void cleanerFailure(TWCleaner&) override;
    void cleanerProgress(TWCleaner&) override;

    void createCleaners(const TWRunChoice&);
    void showBeginning();
    void confirmWarnings(std::function<void()> confirmed);
    bool takeLatestJobs();
    std::string warnings();
    std::string warningOf(std::size_t position);
    void runFirstCleaner();
    void runCurrentCleaner();
    void watchProgress();
    void showProgress();
    void endRun();
    void reportNotStarted(const TWCleaner&);
    void postNotification();
    void finish(TWRunOutcome);

    int positionOf(const TWCleaner&) const;
    void addMessage(std::string text);
    void addMessage(const TWCleaner&, std::string text, TWMessageType, TWTextPart path = {});
    bool showsResults(int mode) const;

    const std::shared_ptr<const int> life_
        = std::make_shared<const int>(0); // expires with this object, because an answer may arrive after its end
    Context context_;
    const TWPlannedJobsSource source_;
    std::optional<TWPlannedJobs> jobs_;
    const Ending ending_;
    std::shared_ptr<TWHeldLock> lock_;
    const std::vector<std::string> problems_;
    const std::string warning_;
    const std::function<void(TWRunOutcome)> ended_;
    std::vector<std::unique_ptr<TWCleaner>> cleanerArray_;
    bool allSuccess_ = true;
    std::function<void()> began_;
    bool asking_ = false;
    bool running_ = false;
    bool stopping_ = false;
    int currentCleanerIndex_ = 0;
    TWOutcome outcome_;
    std::unique_ptr<TWRunLoopHandle> progress_;
    std::optional<TWRunLoop::Clock::time_point> performing_; // since when the current cleaner has carried out its plan
};
