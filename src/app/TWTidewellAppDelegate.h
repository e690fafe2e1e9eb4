#pragma once

#include "app/TWCleaningRun.h"
#include "app/TWEditors.h"
#include "app/TWPlatform.h"
#include "app/TWResultsWindowController.h"

#include <span>

// Launches the program, owns what every window and command works with, and starts cleaning runs. Main thread.
//
// Life: constructed (settings registered, editors loaded), then once applicationDidFinishLaunching() for the window or
// prepareForCommand() for a command, then any number of clean(), at the end applicationWillTerminate().
class TWTidewellAppDelegate final {
public:
    TWTidewellAppDelegate(const TWPlatform&, TWLaunchKind);
    ~TWTidewellAppDelegate();

    // Before launch. Both outlive the delegate or are set to nothing before they go.
    void setViews(TWRunView* run, TWApplicationWindows* windows);

    // A full launch: data folder, UUID, version, and the greeting the very first time.
    void applicationDidFinishLaunching();

    // Differs on purpose: a command makes the data folder and the UUID if they are missing, but never stamps the
    // version and never greets.
    void prepareForCommand();

    void applicationWillTerminate();

    // Starts a run of the cleaners that are switched on in the settings. checked holds the check boxes by position; if
    // none is checked, nothing is run.
    //
    // Differs on purpose: during a run, the warnings are confirmed first while that run stays as it was; then it ends
    // silently and the new one starts. While a question of an earlier call is open, nothing happens.
    void clean(const TWRunChoice& checked);

    // The same for a command: those cleaners run, whatever the settings say.
    void cleanForCommand(const TWRunChoice&);

    // Differs on purpose: ends the run. What was begun is ended and checked, nothing further is begun, the closing line
    // follows.
    void stop();

    bool running() const { return current_ && current_->running(); }

    // The switches of the cleaners.
    TWRunChoice switchedOn() const;

    // One line for the user about each settings or list file that could not be read.
    std::vector<std::string> problems() const;

    TWSettings& settings() { return settings_; }
    const TWDataFolder& dataFolder() const { return dataFolder_; }
    TWEditors& editors() { return editors_; }
    TWResultsWindowController& resultsWindowController() { return resultsWindowController_; }
    const TWPlatform& platform() const { return platform_; }

    // For what plans beside a run: the lines of the main window.
    TWCleanerContext cleanerContext() const { return { deletion_, settings_ }; }
    TWSettingsSources settingsSources() const { return { settings_, platform_.places, &editors_ }; }

private:
    void growlNotificationWasClicked();
    void registerDefaults();
    void stampUUID();
    void greet();

    void startRun(const TWRunChoice&, TWCleaningRun::Ending);
    std::optional<std::shared_ptr<TWHeldLock>> lockCleaning();
    void refuse(const TWAlert&);
    void runEnded(TWRunOutcome);

    TWPlatform platform_;
    TWSettings settings_;
    TWDataFolder dataFolder_;
    TWDeletionGuard guard_;
    TWDeletionTools deletion_;
    TWResultsWindowController resultsWindowController_;
    TWEditors editors_;
    TWRunView* runView_ = nullptr;
    TWApplicationWindows* windows_ = nullptr;
    bool refusing_ = false; // an alert says why there is no run
    const std::shared_ptr<const int> life_ = std::make_shared<const int>(0); // an answer may come after the end
    std::unique_ptr<TWCleaningRun> current_;
    std::unique_ptr<TWCleaningRun> next_; // asks whether it may take the place of the current one
};
