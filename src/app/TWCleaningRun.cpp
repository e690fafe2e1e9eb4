#include "app/TWCleaningRun.h"

#include "support/TWText.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr auto CleaningUp = "Cleaning up NOW! (%@)";
constexpr auto WarningTitle = "Wait!";
constexpr auto WarningContinue = "Continue Anyway";
constexpr auto WarningCancel = "Cancel";
constexpr auto DoneCleaning = "Done Cleaning! (%@)";
constexpr auto SuccessTitle = "Tidewell is done cleaning!";
constexpr auto SuccessText = "All the selected cleaners ran successfully.";
constexpr auto SuccessClick = " Click here to view the results.";
constexpr auto FailureTitle = "Uh oh...";
constexpr auto FailureText = "One or more cleaners failed to run successfully.";
constexpr auto FailureClick = " Click here for details.";

constexpr auto NotStarted = "%@ was not started, because the cleaning was stopped.";

constexpr auto TitleAndProgress = "%@: %@";

constexpr TWRunLoop::Duration ProgressInterval{ 100 };

// Values of "ShowResultsMode".
constexpr int OnFailure = 0;
constexpr int AtStart = 1;
constexpr int AtEnd = 2;

std::string dateText()
{
    return TWText::utcTime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
}

}

TWCleaningRun::TWCleaningRun(const Context& context, const TWRunChoice& choice, TWPlannedJobsSource jobs, Ending ending,
    std::shared_ptr<TWHeldLock> lock, std::vector<std::string> problems, std::string warning,
    std::function<void(TWRunOutcome)> ended)
    : context_(context)
    , source_(std::move(jobs))
    , jobs_(source_ ? source_() : std::nullopt)
    , ending_(ending)
    , lock_(std::move(lock))
    , problems_(std::move(problems))
    , warning_(std::move(warning))
    , ended_(std::move(ended))
{
    createCleaners(choice);
}

TWCleaningRun::~TWCleaningRun() = default;

// Differs on purpose: every run has cleaners of its own, so that a second press of Clean does not affect the run that
// is going on.
void TWCleaningRun::createCleaners(const TWRunChoice& choice)
{
    const auto& table = TWCleanerTable();
    for (std::size_t position = 0; position < table.size(); ++position) {
        auto cleaner = table[position].make(context_.cleaners);
        cleaner->setDelegate(this);
        cleaner->setIsActive(choice[position]);
        table[position].giveInfo(*cleaner, context_.sources);
        cleanerArray_.push_back(std::move(cleaner));
    }
}

void TWCleaningRun::start()
{
    showBeginning();
    confirmWarnings([this] { runFirstCleaner(); });
}

void TWCleaningRun::startInPlace(std::function<void()> replace)
{
    confirmWarnings([this, replace = std::move(replace)] {
        replace();
        for (int position = 0; position < TWCleanerCount; ++position)
            context_.view.stopSpinning(position);
        showBeginning();
        runFirstCleaner();
    });
}

void TWCleaningRun::showBeginning()
{
    context_.results.removeAllMessages();
    addMessage(TWText::fill(CleaningUp, { dateText() }));
    for (const auto& problem : problems_)
        addMessage(problem);
    context_.view.setCleanEnabled(false);
    for (int position = 0; position < TWCleanerCount; ++position)
        context_.view.showLight(position, TWLight::Off);
}

void TWCleaningRun::confirmWarnings(std::function<void()> confirmed)
{
    const auto text = warnings();
    if (text.empty()) {
        confirmed();
        return;
    }
    asking_ = true;
    const TWAlert question{ WarningTitle, text, WarningContinue, WarningCancel, TWConfirming::LosesSomething };
    context_.alerts.show(
        question, [this, life = std::weak_ptr(life_), confirmed = std::move(confirmed)](TWAnswer answer) {
            if (life.expired())
                return;
            asking_ = false;
            if (answer == TWAnswer::Default && takeLatestJobs())
                confirmed();
            else
                finish(TWRunOutcome::NothingRun);
        });
}

// False if nothing is left to do. Only the warnings of the first jobs were confirmed.
bool TWCleaningRun::takeLatestJobs()
{
    if (!source_)
        return true;
    jobs_ = source_();
    bool any = false;
    for (std::size_t position = 0; jobs_ && position < cleanerArray_.size(); ++position) {
        auto& cleaner = *cleanerArray_[position];
        cleaner.setIsActive(cleaner.isActive() && (*jobs_)[position].plan);
        any = any || cleaner.isActive();
    }
    return any;
}

std::string TWCleaningRun::warnings()
{
    std::string joined = warning_;
    for (std::size_t position = 0; position < cleanerArray_.size(); ++position) {
        const auto warning = warningOf(position);
        if (!warning.empty())
            joined += (joined.empty() ? "" : "\n\n") + warning;
    }
    return joined;
}

// Warnings about a plan are those about the lists that it was made from.
std::string TWCleaningRun::warningOf(std::size_t position)
{
    return jobs_ ? (*jobs_)[position].warning : cleanerArray_[position]->validate();
}

void TWCleaningRun::runFirstCleaner()
{
    if (showsResults(AtStart))
        context_.windows.bringToFront(TWWindow::Results);
    running_ = true;
    if (began_)
        began_();
    currentCleanerIndex_ = 0;
    if (context_.view.showsProgress())
        watchProgress();
    runCurrentCleaner();
}

void TWCleaningRun::runCurrentCleaner()
{
    const auto position = static_cast<std::size_t>(currentCleanerIndex_);
    if (jobs_)
        cleanerArray_[position]->carryOut(std::move((*jobs_)[position]));
    else
        cleanerArray_[position]->clean();
}

void TWCleaningRun::watchProgress()
{
    for (const auto& cleaner : cleanerArray_)
        cleaner->setMeasures(true);
    progress_ = context_.cleaners.deletion.runLoop.every(ProgressInterval, [this] { showProgress(); });
}

void TWCleaningRun::showProgress()
{
    const auto& cleaner = *cleanerArray_[static_cast<std::size_t>(currentCleanerIndex_)];
    const auto progress = cleaner.progress();
    const auto now = context_.cleaners.deletion.runLoop.now();
    if (progress.planned && !performing_)
        performing_ = now;
    const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - performing_.value_or(now));
    const auto text = progress.text(elapsed);
    if (text.empty())
        return;
    const auto isActive = [](const auto& each) { return each->isActive(); };
    const auto current = cleanerArray_.begin() + currentCleanerIndex_;
    const auto before = static_cast<double>(std::count_if(cleanerArray_.begin(), current, isActive));
    const auto all = static_cast<double>(std::count_if(cleanerArray_.begin(), cleanerArray_.end(), isActive));
    const auto* title = TWCleanerTable()[static_cast<std::size_t>(currentCleanerIndex_)].title;
    context_.view.showProgress(
        { (before + progress.fraction()) / all, TWText::fill(TitleAndProgress, { title, text }) });
}

void TWCleaningRun::stop()
{
    if (!running_)
        return;
    stopping_ = true;
    cleanerArray_[static_cast<std::size_t>(currentCleanerIndex_)]->stop();
}

void TWCleaningRun::cleanerStarted(TWCleaner& cleaner)
{
    addMessage(cleaner, cleaner.startedMessageString(), TWMessageType::Information);
    context_.view.showLight(positionOf(cleaner), TWLight::Yellow);
    context_.view.startSpinning(positionOf(cleaner));
}

void TWCleaningRun::cleanerProgress(TWCleaner& cleaner)
{
    addMessage(cleaner, std::string(TWProgressMark) + cleaner.progressMessageString(), TWMessageType::Information,
        cleaner.progressPath().movedBy(TWProgressMark.size()));
}

void TWCleaningRun::cleanerSuccess(TWCleaner& cleaner)
{
    addMessage(cleaner, cleaner.successMessageString(), TWMessageType::Success);
    context_.view.showLight(positionOf(cleaner), TWLight::Green);
    context_.view.stopSpinning(positionOf(cleaner));
}

void TWCleaningRun::cleanerFailure(TWCleaner& cleaner)
{
    allSuccess_ = false;
    addMessage(cleaner, cleaner.failureMessageString(), TWMessageType::Failure);
    if (showsResults(OnFailure) && !cleaner.cancelled())
        context_.windows.bringToFront(TWWindow::Results);
    // Differs on purpose: a cleaner that the user stopped looks stopped, not failed.
    context_.view.showLight(positionOf(cleaner), cleaner.cancelled() ? TWLight::Stopped : TWLight::Red);
    context_.view.stopSpinning(positionOf(cleaner));
}

void TWCleaningRun::cleanerFinished(TWCleaner& cleaner)
{
    if (cleaner.isActive())
        outcome_ += cleaner.outcome();
    performing_.reset();
    if (stopping_ || currentCleanerIndex_ == TWCleanerCount - 1) {
        endRun();
        return;
    }
    ++currentCleanerIndex_;
    runCurrentCleaner();
}

void TWCleaningRun::endRun()
{
    running_ = false;
    progress_.reset();
    outcome_.stopped = stopping_;
    for (auto position = static_cast<std::size_t>(currentCleanerIndex_) + 1; position < cleanerArray_.size();
         ++position)
        reportNotStarted(*cleanerArray_[position]);
    addMessage(TWText::fill(DoneCleaning, { dateText() }));
    if (showsResults(AtEnd))
        context_.windows.bringToFront(TWWindow::Results);
    if (context_.settings.boolean(TWKey::GrowlCleaningDone))
        postNotification();
    const bool asSettingsSay = ending_ == Ending::AsSettingsSay;
    const auto quits = context_.settings.boolean(TWKey::AutoQuit)
        && (context_.settings.integer(TWKey::AutoQuitMode) != 0 || allSuccess_);
    if (asSettingsSay && quits) {
        context_.windows.terminate();
        return;
    }
    if (asSettingsSay && context_.settings.boolean(TWKey::BounceDockIcon))
        context_.windows.requestUserAttention();
    context_.view.showOutcome(outcome_);
    finish(allSuccess_ ? TWRunOutcome::Succeeded : TWRunOutcome::Failed);
}

void TWCleaningRun::reportNotStarted(const TWCleaner& cleaner)
{
    if (!cleaner.isActive())
        return;
    ++outcome_.notStarted;
    const auto* title = TWCleanerTable()[static_cast<std::size_t>(positionOf(cleaner))].title;
    addMessage(cleaner, TWText::fill(NotStarted, { title }), TWMessageType::Information);
}

void TWCleaningRun::postNotification()
{
    TWNotification notification{ SuccessTitle, SuccessText, false, false };
    if (!allSuccess_)
        notification = { FailureTitle, FailureText, true, true };
    // A command has ended by the time the user clicks.
    notification.clickable = ending_ == Ending::AsSettingsSay;
    if (notification.clickable)
        notification.text += allSuccess_ ? SuccessClick : FailureClick;
    context_.notifier.post(notification);
}

// Must be the last call, because it usually destroys the run.
void TWCleaningRun::finish(TWRunOutcome outcome)
{
    lock_.reset();
    const auto ended = ended_;
    ended(outcome);
}

int TWCleaningRun::positionOf(const TWCleaner& cleaner) const
{
    const auto found = std::find_if(
        cleanerArray_.begin(), cleanerArray_.end(), [&](const auto& each) { return each.get() == &cleaner; });
    return static_cast<int>(found - cleanerArray_.begin());
}

void TWCleaningRun::addMessage(std::string text)
{
    context_.results.addMessage({ std::move(text), TWMessageType::Information });
}

void TWCleaningRun::addMessage(const TWCleaner& cleaner, std::string text, TWMessageType type, TWTextPart path)
{
    const auto position = static_cast<std::int16_t>(positionOf(cleaner));
    context_.results.addMessage({ std::move(text), type, false, position, path });
}

bool TWCleaningRun::showsResults(int mode) const
{
    return ending_ == Ending::AsSettingsSay && context_.settings.boolean(TWKey::ShowResults)
        && context_.settings.integer(TWKey::ShowResultsMode) == mode;
}
