#pragma once

#include <functional>
#include <string>
#include <vector>

struct TWAlert {
    std::string title;
    std::string text;
    std::string defaultButton;
    std::string alternateButton; // "" when there is only one button
};

enum class TWAnswer { Default, Alternate };

// The one door for questions and announcements: in the window a sheet, on the command line standard error and the
// prompt.
class TWAlerts {
public:
    virtual ~TWAlerts() = default;

    // Calls answered exactly once, possibly before this returns; never after the program has begun to end.
    virtual void show(const TWAlert&, std::function<void(TWAnswer)> answered) = 0;
};
