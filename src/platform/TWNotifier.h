#pragma once

#include <functional>
#include <string>

struct TWNotification {
    std::string title;
    std::string text;
    bool warning = false; // shows the warning icon
    bool sticky = false; // stays until the user dismisses it
    bool clickable = true; // a click is reported to setClicked()
};

// Shows desktop notifications. Does nothing if the session has no notification service. Main thread.
class TWNotifier {
public:
    virtual ~TWNotifier() = default;

    virtual void post(const TWNotification&) = 0;

    // Sets the function that is called when the user clicks one of our notifications.
    virtual void setClicked(std::function<void()>) = 0;
};
