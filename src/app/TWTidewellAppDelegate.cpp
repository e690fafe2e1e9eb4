// The cleaning run.

#include "app/TWTidewellAppDelegate.h"

#include "cleaners/TWTrashCleaner.h"
#include "support/TWText.h"

#include <algorithm>
#include <chrono>
#include <ctime>

namespace {

constexpr auto NoCleanerTitle = "No cleaner is activated.";
constexpr auto NoCleanerText
    = "You must activate at least one cleaner for Tidewell to do something! Check the boxes beside the cleaners "
      "that you would like to use.";
constexpr auto BusyTitle = "Another cleaning is running.";
constexpr auto BusyText
    = "Tidewell is already cleaning in another window or terminal. Please wait until it is done, then try again.";
constexpr auto OK = "OK";
constexpr auto CleaningUp = "Cleaning up NOW! (%@)";
constexpr auto WarningTitle = "Wait!";
constexpr auto WarningContinue = "Continue Anyway";
constexpr auto WarningCancel = "Cancel";
constexpr auto Bullet = "  \xE2\x80\xA2 ";
constexpr auto DoneCleaning = "Done Cleaning! (%@)";
constexpr auto SuccessTitle = "Tidewell is done cleaning!";
constexpr auto SuccessText = "All the selected cleaners ran successfully. Click here to view the results.";
constexpr auto FailureTitle = "Uh oh...";
constexpr auto FailureText = "One or more cleaners failed to run successfully. Click here for details.";

constexpr auto LockFile = ".cleaning.lock";

// Values of "ShowResultsMode".
constexpr int OnFailure = 0;
constexpr int AtStart = 1;
constexpr int AtEnd = 2;

std::string dateText()
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[40];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts);
    return text;
}

}

TWTidewellAppDelegate::TWTidewellAppDelegate(const TWPlatform& platform, TWLaunchKind kind)
    : platform_(platform)
    , settings_(platform.userDefaults)
    , dataFolder_(platform.ownFiles, platform.places, platform.bundle)
    , guard_(platform.places, platform.fileSystem, platform.mountTable, dataFolder_.path())
    , deletion_{ platform.runLoop, platform.launcher, platform.fileSystem, guard_, platform.places }
    , resultsWindowController_(platform.runLoop)
    , dictionaryWindowController_(dataFolder_)
    , filesWindowController_({ settings_, dataFolder_, platform.bundle, platform.fileSystem, platform.places,
          platform.runLoop, platform.alerts, guard_, dictionaryWindowController_ })
{
    registerDefaults();
    // Differs on purpose: the run loop is not turned here, nothing can be waiting yet.
    dictionaryWindowController_.awakeFromNib();
    filesWindowController_.awakeFromNib(kind);
}

std::vector<std::string> TWTidewellAppDelegate::problems() const
{
    std::vector<std::string> problems{ platform_.userDefaults.problem(), dictionaryWindowController_.problem(),
        filesWindowController_.problem() };
    std::erase(problems, "");
    return problems;
}

TWTidewellAppDelegate::~TWTidewellAppDelegate() = default;

void TWTidewellAppDelegate::clean()
{
    if (asking_)
        return;
    allSuccess_ = true;
    if (!anyCleanerChecked()) {
        refuse({ NoCleanerTitle, NoCleanerText, OK, "" });
        return;
    }
    if (!lockCleaning()) {
        refuse({ BusyTitle, BusyText, OK, "" });
        return;
    }
    resultsWindowController_.removeAllMessages();
    addMessage(TWText::fill(CleaningUp, { dateText() }), TWMessageType::Information);
    for (const auto& problem : problems())
        addMessage(problem, TWMessageType::Information);
    view_->setCleanEnabled(false);
    for (int position = 0; position < TWCleanerCount; ++position)
        view_->showLight(position, TWLight::Off);
    const auto before = activeFlags();
    prepareCleaners();
    const auto text = warnings();
    if (text.empty()) {
        runFirstCleaner();
        return;
    }
    asking_ = true;
    platform_.alerts.show({ WarningTitle, text, WarningContinue, WarningCancel },
        [this, before](TWAnswer answer) { answered(answer, before); });
}

std::vector<bool> TWTidewellAppDelegate::activeFlags() const
{
    std::vector<bool> flags;
    for (const auto& cleaner : cleanerArray_)
        flags.push_back(cleaner->isActive());
    return flags;
}

bool TWTidewellAppDelegate::anyCleanerChecked() const
{
    for (int position = 0; position < TWCleanerCount; ++position) {
        if (view_->isChecked(position))
            return true;
    }
    return false;
}

// Differs on purpose: one cleaning at a time per data folder. Where no lock can be made, as in a home that cannot be
// written, there is no other cleaning to fear either.
bool TWTidewellAppDelegate::lockCleaning()
{
    if (cleaningLock_)
        return true;
    auto result = platform_.locks.tryLock(dataFolder_.file(LockFile));
    cleaningLock_ = std::move(result.lock);
    return !result.heldByAnother;
}

void TWTidewellAppDelegate::refuse(const TWAlert& alert)
{
    asking_ = true;
    platform_.alerts.show(alert, [this](TWAnswer) {
        asking_ = false;
        if (!running_)
            view_->cleaningEnded(TWRunOutcome::NothingRun);
    });
}

// The check boxes decide whether there is a run at all, the settings who takes part in it.
void TWTidewellAppDelegate::prepareCleaners()
{
    const auto& table = TWCleanerTable();
    for (std::size_t position = 0; position < table.size(); ++position)
        cleanerArray_[position]->setIsActive(settings_.boolean(table[position].key));
    const TWSettingsSources sources{ settings_, platform_.places, &filesWindowController_,
        &dictionaryWindowController_ };
    for (std::size_t position = 0; position < table.size(); ++position)
        table[position].giveInfo(*cleanerArray_[position], sources);
}

std::string TWTidewellAppDelegate::warnings()
{
    std::string joined;
    for (const auto& cleaner : cleanerArray_) {
        const auto warning = cleaner->validate();
        if (!warning.empty())
            joined += (joined.empty() ? "" : "\n\n") + warning;
    }
    return joined;
}

void TWTidewellAppDelegate::answered(TWAnswer answer, const std::vector<bool>& activeBefore)
{
    asking_ = false;
    if (answer == TWAnswer::Default) {
        runFirstCleaner();
        return;
    }
    // A run that was going on before the question goes on as it was.
    for (std::size_t position = 0; running_ && position < cleanerArray_.size(); ++position)
        cleanerArray_[position]->setIsActive(activeBefore[position]);
    backToIdle(TWRunOutcome::NothingRun);
}

void TWTidewellAppDelegate::runFirstCleaner()
{
    if (showsResults(AtStart))
        view_->bringToFront(TWWindow::Results);
    running_ = true;
    stopping_ = false;
    currentCleanerIndex_ = 0;
    runCurrentCleaner();
}

void TWTidewellAppDelegate::runCurrentCleaner()
{
    auto& cleaner = *cleanerArray_[static_cast<std::size_t>(currentCleanerIndex_)];
    atWork_.insert(&cleaner);
    cleaner.clean();
}

void TWTidewellAppDelegate::stop()
{
    if (!running_)
        return;
    stopping_ = true;
    // All of them: after a second start during a run more than one may be at work.
    for (const auto& cleaner : cleanerArray_)
        cleaner->stop();
}

void TWTidewellAppDelegate::cleanerStarted(TWCleaner& cleaner)
{
    addMessage(cleaner.startedMessageString(), TWMessageType::Information);
    view_->showLight(positionOf(cleaner), TWLight::Yellow);
    view_->startSpinning(positionOf(cleaner));
}

void TWTidewellAppDelegate::cleanerProgress(TWCleaner& cleaner)
{
    addMessage(Bullet + cleaner.progressMessageString(), TWMessageType::Information);
}

void TWTidewellAppDelegate::cleanerSuccess(TWCleaner& cleaner)
{
    addMessage(cleaner.successMessageString(), TWMessageType::Success);
    view_->showLight(positionOf(cleaner), TWLight::Green);
    view_->stopSpinning(positionOf(cleaner));
}

void TWTidewellAppDelegate::cleanerFailure(TWCleaner& cleaner)
{
    allSuccess_ = false;
    addMessage(cleaner.failureMessageString(), TWMessageType::Failure);
    if (showsResults(OnFailure) && !cleaner.cancelled())
        view_->bringToFront(TWWindow::Results);
    view_->showLight(positionOf(cleaner), TWLight::Red);
    view_->stopSpinning(positionOf(cleaner));
}

// Kept on purpose: the index alone decides what comes next, not the cleaner that has finished. After a second start
// during a run more than one may be at work; the run ends with the last of them.
void TWTidewellAppDelegate::cleanerFinished(TWCleaner& cleaner)
{
    atWork_.erase(&cleaner);
    if (stopping_ || currentCleanerIndex_ == TWCleanerCount - 1) {
        if (atWork_.empty())
            endRun();
        return;
    }
    ++currentCleanerIndex_;
    runCurrentCleaner();
}

void TWTidewellAppDelegate::endRun()
{
    addMessage(TWText::fill(DoneCleaning, { dateText() }), TWMessageType::Information);
    if (showsResults(AtEnd))
        view_->bringToFront(TWWindow::Results);
    if (settings_.boolean(TWKey::GrowlCleaningDone))
        postNotification();
    if (settings_.boolean(TWKey::AutoQuit) && (settings_.integer(TWKey::AutoQuitMode) != 0 || allSuccess_)) {
        view_->terminate();
        return;
    }
    if (settings_.boolean(TWKey::BounceDockIcon))
        view_->requestUserAttention();
    backToIdle(allSuccess_ ? TWRunOutcome::Succeeded : TWRunOutcome::Failed);
}

void TWTidewellAppDelegate::postNotification()
{
    if (allSuccess_)
        platform_.notifier.post({ SuccessTitle, SuccessText, false, false });
    else
        platform_.notifier.post({ FailureTitle, FailureText, true, true });
}

void TWTidewellAppDelegate::backToIdle(TWRunOutcome outcome)
{
    // A second start that was not confirmed leaves the first run going.
    if (outcome != TWRunOutcome::NothingRun)
        running_ = false;
    if (!running_ && !asking_)
        cleaningLock_.reset();
    // While a run goes on, Stop stays in its place.
    view_->setCleanEnabled(!running_);
    view_->cleaningEnded(outcome);
}

void TWTidewellAppDelegate::growlNotificationWasClicked()
{
    view_->activate();
    view_->bringToFront(TWWindow::Main);
    view_->bringToFront(TWWindow::Results);
}

std::vector<std::string> TWTidewellAppDelegate::trashItems() const
{
    TWTrashCleaner cleaner(deletion_, settings_);
    return cleaner.plan().paths;
}

int TWTidewellAppDelegate::positionOf(const TWCleaner& cleaner) const
{
    const auto found = std::find_if(
        cleanerArray_.begin(), cleanerArray_.end(), [&](const auto& each) { return each.get() == &cleaner; });
    return static_cast<int>(found - cleanerArray_.begin());
}

void TWTidewellAppDelegate::addMessage(const std::string& text, TWMessageType type)
{
    resultsWindowController_.addMessage(text, type);
}

bool TWTidewellAppDelegate::showsResults(int mode) const
{
    return settings_.boolean(TWKey::ShowResults) && settings_.integer(TWKey::ShowResultsMode) == mode;
}
