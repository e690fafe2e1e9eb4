#pragma once

#include "app/TWApplicationView.h"
#include "app/TWCleanerTable.h"
#include "app/TWPlatform.h"
#include "app/TWResultsWindowController.h"
#include "editors/TWDictionaryWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "settings/TWDataFolder.h"
#include "settings/TWLaunchKind.h"

#include <set>

// Owns the controllers and the cleaners, and drives the cleaning run. Main thread.
//
// Life: constructed (settings registered, editors loaded), then once applicationDidFinishLaunching() for the window or
// prepareForCommand() for a command, then any number of clean(), at the end applicationWillTerminate().
class TWTidewellAppDelegate final : private TWCleanerDelegate {
public:
    TWTidewellAppDelegate(const TWPlatform&, TWLaunchKind);
    ~TWTidewellAppDelegate();

    // Before launch; outlives the delegate or is set to nothing before it goes.
    void setView(TWApplicationView* view) { view_ = view; }

    // A full launch: data folder, UUID, version, cleaners, and the greeting the very first time.
    void applicationDidFinishLaunching();

    // Differs on purpose: a command makes the data folder and the UUID when they are missing, but never stamps the
    // version and never greets, and the ending settings of the window do not concern it.
    void prepareForCommand();

    void applicationWillTerminate();

    // Starts a run. Kept on purpose: during a run it starts again at once, whatever the cleaners still report.
    void clean();

    // Differs on purpose: ends the run. What was begun is ended and checked, nothing further is begun, the closing line
    // follows.
    void stop();

    bool running() const { return running_; }

    // One line for the user about each settings or list file that could not be read.
    std::vector<std::string> problems() const;

    TWSettings& settings() { return settings_; }
    const TWDataFolder& dataFolder() const { return dataFolder_; }
    TWResultsWindowController& resultsWindowController() { return resultsWindowController_; }
    TWFilesWindowController& filesWindowController() { return filesWindowController_; }
    TWDictionaryWindowController& dictionaryWindowController() { return dictionaryWindowController_; }
    const TWPlatform& platform() const { return platform_; }

    // Of the Trash row's quiet line: what the Trash cleaner would delete now.
    std::vector<std::string> trashItems() const;

private:
    void cleanerStarted(TWCleaner&) override;
    void cleanerFinished(TWCleaner&) override;
    void cleanerSuccess(TWCleaner&) override;
    void cleanerFailure(TWCleaner&) override;
    void cleanerProgress(TWCleaner&) override;
    void growlNotificationWasClicked();

    void registerDefaults();
    void stampUUID();
    void createCleaners();
    void greet();

    bool anyCleanerChecked() const;
    bool lockCleaning();
    void refuse(const TWAlert&);
    void prepareCleaners();
    std::string warnings();
    std::vector<bool> activeFlags() const;
    void answered(TWAnswer, const std::vector<bool>& activeBefore);
    void runFirstCleaner();
    void runCurrentCleaner();
    void endRun();
    void postNotification();
    void backToIdle(TWRunOutcome);

    int positionOf(const TWCleaner&) const;
    void addMessage(const std::string& text, TWMessageType);
    bool showsResults(int mode) const;

    TWPlatform platform_;
    TWSettings settings_;
    TWDataFolder dataFolder_;
    TWDeletionGuard guard_;
    TWDeletionTools deletion_;
    TWResultsWindowController resultsWindowController_;
    TWDictionaryWindowController dictionaryWindowController_;
    TWFilesWindowController filesWindowController_;
    TWApplicationView* view_ = nullptr;

    std::vector<std::unique_ptr<TWCleaner>> cleanerArray_;
    bool allSuccess_ = true;
    bool running_ = false;
    bool stopping_ = false;
    bool asking_ = false; // an alert of clean() waits for its answer
    int currentCleanerIndex_ = 0;
    std::set<const TWCleaner*> atWork_; // begun and not finished
    std::unique_ptr<TWHeldLock> cleaningLock_;
};
