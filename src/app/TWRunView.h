#pragma once

#include "cleaners/TWProgress.h"

enum class TWLight { Off, Yellow, Green, Red, Stopped };

// How a press of Clean ended.
enum class TWRunOutcome {
    NothingRun, // no cleaner was on, or a warning was not confirmed
    Succeeded,
    Failed, // at least one cleaner failed
};

// How far a run is.
struct TWRunProgress {
    double fraction = 0; // of the whole run, from 0 to 1
    std::string text; // "Trash: 41 of 90, 3.1 of 7 GB, about 20 s"
};

// Shows a cleaning run: the main window or the terminal. Positions are those of TWCleanerTable. Main thread.
class TWRunView {
public:
    virtual void showLight(int position, TWLight) = 0;
    virtual void startSpinning(int position) = 0;
    virtual void stopSpinning(int position) = 0;

    // True enables Clean and disables Stop; false does the reverse.
    virtual void setCleanEnabled(bool) = 0;

    // True if the view shows progress; what is deleted is then measured. Asked when a run begins.
    virtual bool showsProgress() const { return false; }

    // Several times a second during a run.
    virtual void showProgress(const TWRunProgress&) { }

    // What the run has brought. Comes directly before cleaningEnded(), unless nothing was run.
    virtual void showOutcome(const TWOutcome&) { }

    // The run is over. Another one may be started inside this call.
    virtual void cleaningEnded(TWRunOutcome) { }

protected:
    ~TWRunView() = default;
};
