#pragma once

#include <functional>
#include <string>

struct TWNotification {
    std::string title;
    std::string text;
    bool warning = false; // with the warning image
    bool sticky = false; // stays until it is dismissed
    bool clickable = true; // a click is reported
};

// Desktop notifications. Without a notification service nothing happens.
class TWNotifier {
public:
    virtual ~TWNotifier() = default;

    virtual void post(const TWNotification&) = 0;

    // Main thread, when the user clicks a notification of ours.
    virtual void setClicked(std::function<void()>) = 0;
};
