#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "cli/TWInvocation.h"

// A cleaning seen from a terminal: results lines on standard output, alerts on standard error and at the prompt. Main thread.
class TWTerminal final : public TWApplicationView, public TWResultsView, public TWAlerts {
public:
    explicit TWTerminal(const TWInvocation&);

    // Whose runs are shown; before the first one.
    void setDelegate(TWTidewellAppDelegate& delegate) { delegate_ = &delegate; }

    // Called once, when the run is over or was not begun.
    void setEnded(std::function<void(TWRunOutcome)> ended) { ended_ = std::move(ended); }

    void show(const TWAlert&, std::function<void(TWAnswer)> answered) override;

    void messagesRemoved() override { printed_ = 0; }
    void messagesAdded(std::size_t count) override;

    bool isChecked(int position) const override;
    void showLight(int, TWLight) override { }
    void startSpinning(int) override { }
    void stopSpinning(int) override { }
    void setCleanEnabled(bool) override { }
    void bringToFront(TWWindow) override { }
    bool isKeyWindow(TWWindow) const override { return false; }
    void activate() override { }
    void requestUserAttention() override { }
    void terminate() override { }
    void cleaningEnded(TWRunOutcome) override;

private:
    bool confirmed(const TWAlert&) const;

    const TWInvocation& invocation_;
    TWTidewellAppDelegate* delegate_ = nullptr;
    std::function<void(TWRunOutcome)> ended_;
    std::size_t printed_ = 0;
    const bool coloured_;
};
