#pragma once

#include <functional>
#include <string>
#include <vector>

// What answering with the default button does.
enum class TWConfirming { IsHarmless, LosesSomething };

struct TWAlert {
    std::string title;
    std::string text;
    std::string defaultButton;
    std::string alternateButton; // "" if there is only one button

    // If confirming deletes or discards something, Return and Escape press the alternate button. The answers keep their
    // meaning: TWAnswer::Default is still the default button.
    TWConfirming confirming = TWConfirming::IsHarmless;
};

enum class TWAnswer { Default, Alternate };

// All questions and announcements go through this seam: sheets in the window, standard error and the prompt on the
// command line.
class TWAlerts {
public:
    virtual ~TWAlerts() = default;

    // Calls answered exactly once, possibly before this returns, but never after the program has begun to end.
    virtual void show(const TWAlert&, std::function<void(TWAnswer)> answered) = 0;
};
