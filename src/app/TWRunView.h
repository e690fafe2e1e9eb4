#pragma once

enum class TWLight { Off, Yellow, Green, Red };

// How a press of Clean ended, for whoever waits for it.
enum class TWRunOutcome {
    NothingRun, // no cleaner was on, or a warning was not confirmed
    Succeeded,
    Failed, // at least one cleaner failed
};

// What a cleaning run shows: the main window, or the terminal. Positions are those of TWCleanerTable. Main thread.
class TWRunView {
public:
    virtual void showLight(int position, TWLight) = 0;
    virtual void startSpinning(int position) = 0;
    virtual void stopSpinning(int position) = 0;

    // True: Clean can be pressed and Stop cannot. False: the reverse.
    virtual void setCleanEnabled(bool) = 0;

    // The run is over, and another one may be started inside this call.
    virtual void cleaningEnded(TWRunOutcome) { }

protected:
    ~TWRunView() = default;
};
