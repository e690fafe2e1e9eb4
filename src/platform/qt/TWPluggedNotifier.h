#pragma once

#include "platform/TWNotifier.h"

#include <memory>
#include <string>

// Loads the real notifier from a plug-in when the first notification is posted. The notifier's D-Bus libraries take a
// fifth of the time that a short command takes in all, and most commands post nothing.
class TWPluggedNotifier final : public TWNotifier {
public:
    explicit TWPluggedNotifier(std::string plugIn)
        : plugIn_(std::move(plugIn))
    {
    }

    // Writes a line to the log if the plug-in cannot be loaded.
    void post(const TWNotification&) override;
    void setClicked(std::function<void()>) override;

private:
    const std::string plugIn_;
    std::function<void()> clicked_;
    std::unique_ptr<TWNotifier> notifier_;
};

// The function that the plug-in exports. The caller owns the result.
extern "C" TWNotifier* TWMakeNotifier();
