#pragma once

enum class TWLight { Off, Yellow, Green, Red };

// How a press of Clean ended.
enum class TWRunOutcome {
    NothingRun, // no cleaner was on, or a warning was not confirmed
    Succeeded,
    Failed, // at least one cleaner failed
};

// Shows a cleaning run: the main window or the terminal. Positions are those of TWCleanerTable. Main thread.
class TWRunView {
public:
    virtual void showLight(int position, TWLight) = 0;
    virtual void startSpinning(int position) = 0;
    virtual void stopSpinning(int position) = 0;

    // True enables Clean and disables Stop; false does the reverse.
    virtual void setCleanEnabled(bool) = 0;

    // The run is over. Another one may be started inside this call.
    virtual void cleaningEnded(TWRunOutcome) { }

protected:
    ~TWRunView() = default;
};
