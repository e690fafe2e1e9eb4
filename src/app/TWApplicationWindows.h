#pragma once

enum class TWWindow { Main, Results, Preferences, QuickCleanup };

// The program's windows and its place on the desktop. A command has no windows and ignores all calls. Main thread.
class TWApplicationWindows {
public:
    // Shows the window above the others and gives it the keyboard focus.
    virtual void bringToFront(TWWindow) = 0;

    // True if the window has the keyboard focus.
    virtual bool isKeyWindow(TWWindow) const = 0;

    // Makes this program the active one.
    virtual void activate() = 0;
    virtual void requestUserAttention() = 0;

    // Quits on a later turn of the event loop.
    virtual void terminate() = 0;

protected:
    ~TWApplicationWindows() = default;
};
