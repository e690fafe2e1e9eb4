#pragma once

#include "app/TWCleaningRun.h"
#include "app/TWEditors.h"
#include "app/TWPlatform.h"
#include "app/TWPreview.h"
#include "app/TWResultsWindowController.h"

#include <span>

// Launches the program, owns what every window and command needs, and starts cleaning runs. Main thread.
//
// The constructor registers the settings and loads the editors. Then call applicationDidFinishLaunching() for the
// window or prepareForCommand() for a command once, clean() any number of times, and applicationWillTerminate() at the
// end.
class TWTidewellAppDelegate final {
public:
    TWTidewellAppDelegate(const TWPlatform&, TWLaunchKind);
    ~TWTidewellAppDelegate();

    // Call this before the launch. Both must outlive the delegate or be set to nullptr before they are destroyed.
    void setViews(TWRunView* run, TWApplicationWindows* windows);

    // A full launch: makes the data folder and the UUID, stores the version and, the very first time, greets the user.
    void applicationDidFinishLaunching();

    // Differs on purpose: a command makes the data folder and the UUID if they are missing, but never stores the
    // version and never greets.
    void prepareForCommand();

    void applicationWillTerminate();

    // Starts a run of the cleaners that are switched on in the settings. checked holds the window's check boxes by
    // position; if none is checked, nothing is run.
    //
    // Differs on purpose: if a run is going on, it goes on until the user has confirmed the new run's warnings; then it
    // ends without a report and the new one starts. Does nothing while the question of an earlier call is open.
    void clean(const TWRunChoice& checked);

    // Like clean(), but carries out what is ticked in the preview and nothing else, whatever the settings and lists say
    // by now; but what is to be overwritten today is overwritten. An item that has changed since the preview is left
    // alone. Nothing is run if nothing is ticked, or while another run is going on. What is ticked when the user has
    // confirmed the warnings counts; a preview that is destroyed before is not carried out. began is called when the
    // run begins, which may be inside this call, after a question, or never.
    void cleanPreview(const TWPreview&, std::function<void()> began = nullptr);

    // The same as clean() for a command: runs the chosen cleaners, whatever the settings say.
    void cleanForCommand(const TWRunChoice&);

    // Differs on purpose: ends the run. Begins nothing further, ends and checks what was begun, and reports the closing
    // line.
    void stop();

    bool running() const { return current_ && current_->running(); }

    // True while a question or an alert about a new run is open. No run can be started meanwhile.
    bool asking() const { return refusing_ || next_ || (current_ && current_->asking()); }

    // The cleaners that are switched on in the settings.
    TWRunChoice switchedOn() const;

    // One line for the user about each settings or list file that could not be read.
    std::vector<std::string> problems() const;

    TWSettings& settings() { return settings_; }
    const TWDataFolder& dataFolder() const { return dataFolder_; }
    TWEditors& editors() { return editors_; }
    TWResultsWindowController& resultsWindowController() { return resultsWindowController_; }
    const TWPlatform& platform() const { return platform_; }

    // For planning outside a run, as for the lines of the main window.
    TWCleanerContext cleanerContext() const
    {
        return { deletion_, settings_, programs_, logs_, platform_.workspace, platform_.volumes };
    }
    TWSettingsSources settingsSources() const { return { settings_, platform_.places, &editors_ }; }

private:
    void growlNotificationWasClicked();
    void registerDefaults();
    void stampUUID();
    void greet();

    void startRun(
        const TWRunChoice&, TWPlannedJobsSource, TWCleaningRun::Ending, std::function<void()> began = nullptr);
    std::optional<TWAlert> lockCleaning(std::shared_ptr<TWHeldLock>&);
    void refuse(const TWAlert&);
    void runEnded(TWRunOutcome);

    TWPlatform platform_;
    TWSettings settings_;
    TWDataFolder dataFolder_;
    TWDeletionGuard guard_;
    TWDeletionTools deletion_;
    TWOtherPrograms programs_;
    TWLogKnowledge logs_;
    TWResultsWindowController resultsWindowController_;
    TWEditors editors_;
    TWRunView* runView_ = nullptr;
    TWApplicationWindows* windows_ = nullptr;
    bool refusing_ = false; // true while an alert says why there is no run
    const std::shared_ptr<const int> life_
        = std::make_shared<const int>(0); // expires with this object, because an answer may arrive after its end
    std::unique_ptr<TWCleaningRun> current_;
    std::unique_ptr<TWCleaningRun> next_; // waits for the answer whether it may replace the current one
};
