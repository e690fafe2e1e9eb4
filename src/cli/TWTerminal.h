#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "cli/TWInvocation.h"

// Brings the text to standard output. False, after one line on standard error, when it could not be written completely.
bool TWWriteToOutput(const std::string&);

// A cleaning seen from a terminal: results lines on standard output, alerts on standard error and at the prompt. Main
// thread.
class TWTerminal final : public TWRunView, public TWApplicationWindows, public TWResultsView, public TWAlerts {
public:
    explicit TWTerminal(const TWInvocation&);

    // Whose runs are shown; before the first one.
    void setDelegate(TWTidewellAppDelegate& delegate) { delegate_ = &delegate; }

    // Called once, when the run is over or was not begun.
    void setEnded(std::function<void(TWRunOutcome)> ended) { ended_ = std::move(ended); }

    // Answers the question at the prompt, if there is one, with no.
    void endQuestion();

    // False once results could not be written.
    bool outputWritten() const { return outputWritten_; }

    void show(const TWAlert&, std::function<void(TWAnswer)> answered) override;

    void messagesRemoved() override { printed_ = 0; }
    void messagesAdded(std::size_t count) override;

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
    void ask(const TWAlert&);
    void readAnswer();
    void answer(TWAnswer);

    const TWInvocation& invocation_;
    TWTidewellAppDelegate* delegate_ = nullptr;
    std::function<void(TWRunOutcome)> ended_;
    std::function<void(TWAnswer)> answered_; // while a question is at the prompt
    std::unique_ptr<TWRunLoopHandle> prompt_;
    std::size_t printed_ = 0;
    bool outputWritten_ = true;
    const bool coloured_;
};
