#pragma once

enum class TWWindow { Main, Results, Preferences, QuickCleanup };

// The windows of the program and its place on the desktop. A command has none and ignores all calls. Main thread.
class TWApplicationWindows {
public:
    // Shows the window above the others and gives it the keyboard.
    virtual void bringToFront(TWWindow) = 0;

    // True if the window has the keyboard.
    virtual bool isKeyWindow(TWWindow) const = 0;

    // Makes this program the one that the user works with.
    virtual void activate() = 0;
    virtual void requestUserAttention() = 0;

    // Quits on a later turn of the event loop.
    virtual void terminate() = 0;

protected:
    ~TWApplicationWindows() = default;
};
