#pragma once

#include <functional>
#include <string>
#include <vector>

// What pressing the default button does.
enum class TWConfirming { IsHarmless, LosesSomething };

struct TWAlert {
    std::string title;
    std::string text;
    std::string defaultButton;
    std::string alternateButton; // "" if there is only one button

    // With LosesSomething, Return and Escape press the alternate button. TWAnswer::Default still means the default
    // button.
    TWConfirming confirming = TWConfirming::IsHarmless;

    std::string otherButton{}; // "" if there are at most two buttons; only the window shows a third one

    // True if an alert with only one button may be closed without it; the answer is then TWAnswer::Alternate.
    bool canBeClosed = false;
};

enum class TWAnswer { Default, Alternate, Other };

// Asks and informs the user: with sheets in the window, on standard error and with a prompt on the command line. Main
// thread.
class TWAlerts {
public:
    virtual ~TWAlerts() = default;

    // Calls answered exactly once, possibly before this function returns, but never after the program has begun to
    // quit.
    virtual void show(const TWAlert&, std::function<void(TWAnswer)> answered) = 0;
};
