#include "app/TWTidewellAppDelegate.h"

#include "editors/TWKeepWindowController.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto NoCleanerTitle = "No cleaner is activated.";
constexpr auto NoCleanerText
    = "You must activate at least one cleaner for Tidewell to do something! Check the boxes beside the cleaners "
      "that you would like to use.";
constexpr auto NothingTickedTitle = "Nothing is ticked.";
constexpr auto NothingTickedText = "Tick at least one item of the preview for Tidewell to delete.";
constexpr auto RunningTitle = "A cleaning is running.";
constexpr auto RunningText = "Please wait until it is done, or stop it, then clean from the preview.";
constexpr auto NoKeepListTitle = "The keep list could not be read, so nothing was deleted.";
constexpr auto BusyTitle = "Another cleaning is running.";
constexpr auto BusyText
    = "Tidewell is already cleaning in another window or terminal. Please wait until it is done, then try again.";
constexpr auto NoLockTitle = "The cleaning could not be started.";
constexpr auto NoLockText
    = "The file \"%@\", which keeps two cleanings from running at once, could not be locked (%@). "
      "Please remove what is at its place, then try again.";
constexpr auto OK = "OK";

constexpr auto LockFile = ".cleaning.lock";

}

TWTidewellAppDelegate::TWTidewellAppDelegate(const TWPlatform& platform, TWLaunchKind kind)
    : platform_(platform)
    , settings_(platform.userDefaults)
    , dataFolder_(platform.ownFiles, platform.places, platform.bundle)
    , guard_(platform.places, platform.fileSystem, platform.mountTable, dataFolder_.path())
    , deletion_{ platform.runLoop, platform.launcher, platform.fileSystem, guard_, platform.places }
    , programs_{ platform.applications, platform.preferenceFiles }
    , logs_{ platform.logSources, platform.folderWatcher, platform.openFiles }
    , resultsWindowController_(platform.runLoop)
    , editors_({ settings_, dataFolder_, platform.bundle, platform.alerts, deletion_, programs_, logs_,
          platform.workspace, platform.volumes })
{
    registerDefaults();
    // Differs on purpose: does not run the event loop here, because no event can be pending yet.
    editors_.awakeFromNib(kind);
}

TWTidewellAppDelegate::~TWTidewellAppDelegate() = default;

void TWTidewellAppDelegate::setViews(TWRunView* run, TWApplicationWindows* windows)
{
    runView_ = run;
    windows_ = windows;
}

std::vector<std::string> TWTidewellAppDelegate::problems() const
{
    auto problems = editors_.problems();
    if (const auto problem = platform_.userDefaults.problem(); !problem.empty())
        problems.insert(problems.begin(), problem);
    return problems;
}

TWRunChoice TWTidewellAppDelegate::switchedOn() const
{
    TWRunChoice choice{};
    for (std::size_t position = 0; position < choice.size(); ++position)
        choice[position] = TWCleanerTable()[position].available && settings_.boolean(TWCleanerTable()[position].key);
    return choice;
}

void TWTidewellAppDelegate::clean(const TWRunChoice& checked)
{
    // The check boxes decide whether there is a run, the settings decide which cleaners take part.
    if (TWIsAnyChosen(checked))
        startRun(switchedOn(), nullptr, TWCleaningRun::Ending::AsSettingsSay);
    else
        refuse({ NoCleanerTitle, NoCleanerText, OK, "" });
}

void TWTidewellAppDelegate::cleanPreview(const TWPreview& preview, std::function<void()> began)
{
    if (running()) {
        refuse({ RunningTitle, RunningText, OK, "" });
        return;
    }
    const auto choice = preview.choice();
    if (TWIsAnyChosen(choice))
        startRun(choice, preview.jobsSource(), TWCleaningRun::Ending::AsSettingsSay, std::move(began));
    else
        refuse({ NothingTickedTitle, NothingTickedText, OK, "" });
}

void TWTidewellAppDelegate::cleanForCommand(const TWRunChoice& choice)
{
    if (TWIsAnyChosen(choice))
        startRun(choice, nullptr, TWCleaningRun::Ending::OfCommand);
    else
        refuse({ NoCleanerTitle, NoCleanerText, OK, "" });
}

void TWTidewellAppDelegate::startRun(
    const TWRunChoice& choice, TWPlannedJobsSource jobs, TWCleaningRun::Ending ending, std::function<void()> began)
{
    if (asking())
        return;
    if (const auto problem = editors_.get<TWKeepWindowController>().problem(); !problem.empty()) {
        refuse({ NoKeepListTitle, problem, OK, "" });
        return;
    }
    std::shared_ptr<TWHeldLock> lock;
    if (const auto refusal = lockCleaning(lock)) {
        refuse(*refusal);
        return;
    }
    platform_.launcher.shareLock(lock);
    const TWCleaningRun::Context context{ platform_.alerts, platform_.notifier, settings_, cleanerContext(),
        settingsSources(), resultsWindowController_, *runView_, *windows_ };
    // If settings are lost, the defaults may delete more than the user wanted, or less securely.
    auto run = std::make_unique<TWCleaningRun>(context, choice, std::move(jobs), ending, lock, problems(),
        platform_.userDefaults.problem(), [this](TWRunOutcome outcome) { runEnded(outcome); });
    run->setBegan(std::move(began));
    if (!running()) {
        current_ = std::move(run);
        current_->start();
        return;
    }
    next_ = std::move(run);
    next_->startInPlace([this] { current_ = std::move(next_); });
}

// Differs on purpose: only one cleaning at a time per data folder. Where no process can lock, as in a read-only home,
// the run goes on without a lock. Returns the refusal if another process holds the lock or may hold it.
std::optional<TWAlert> TWTidewellAppDelegate::lockCleaning(std::shared_ptr<TWHeldLock>& lock)
{
    if (current_) {
        lock = current_->lock();
        return std::nullopt;
    }
    const auto path = dataFolder_.file(LockFile);
    auto result = platform_.locks.tryLock(path);
    if (result.heldByAnother)
        return TWAlert{ BusyTitle, BusyText, OK, "" };
    if (result.mayBeHeld())
        return TWAlert{ NoLockTitle, TWText::fill(NoLockText, { path, TWErrorText(result.error) }), OK, "" };
    lock = std::move(result.lock);
    return std::nullopt;
}

void TWTidewellAppDelegate::refuse(const TWAlert& alert)
{
    if (std::exchange(refusing_, true))
        return;
    platform_.alerts.show(alert, [this, life = std::weak_ptr(life_)](TWAnswer) {
        if (life.expired())
            return;
        refusing_ = false;
        if (!current_)
            runView_->cleaningEnded(TWRunOutcome::NothingRun);
    });
}

// A run calls this last.
void TWTidewellAppDelegate::runEnded(TWRunOutcome outcome)
{
    if (next_ && outcome == TWRunOutcome::NothingRun) {
        next_.reset();
        return;
    }
    // If next_ is still waiting for an answer, it will find no run to replace.
    const auto ended = std::move(current_);
    runView_->setCleanEnabled(true);
    runView_->cleaningEnded(outcome);
}

void TWTidewellAppDelegate::stop()
{
    if (current_)
        current_->stop();
}

void TWTidewellAppDelegate::growlNotificationWasClicked()
{
    windows_->activate();
    windows_->bringToFront(TWWindow::Main);
    windows_->bringToFront(TWWindow::Results);
}
