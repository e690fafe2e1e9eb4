#pragma once

enum class TWLight { Off, Yellow, Green, Red };
enum class TWWindow { Main, Results, Preferences, QuickCleanup };

// How a press of Clean ended, for who waits for it.
enum class TWRunOutcome {
    NothingRun, // no cleaner was on, or a warning was not confirmed
    Succeeded,
    Failed, // at least one cleaner failed
};

// What the delegate shows and asks: the window, or the terminal. Positions are those of TWCleanerTable. Main thread.
class TWApplicationView {
public:
    // The check box at the position; a mixed state is not checked.
    virtual bool isChecked(int position) const = 0;

    virtual void showLight(int position, TWLight) = 0;
    virtual void startSpinning(int position) = 0;
    virtual void stopSpinning(int position) = 0;

    // Clean can be pressed again, and Stop cannot; or the reverse.
    virtual void setCleanEnabled(bool) = 0;

    // Shows the window above the others and gives it the keyboard.
    virtual void bringToFront(TWWindow) = 0;

    // The window has the keyboard.
    virtual bool isKeyWindow(TWWindow) const = 0;

    // Makes this program the one that the user works with.
    virtual void activate() = 0;
    virtual void requestUserAttention() = 0;

    // Quits on a later turn of the run loop.
    virtual void terminate() = 0;

    virtual void cleaningEnded(TWRunOutcome) { }

protected:
    ~TWApplicationView() = default;
};
