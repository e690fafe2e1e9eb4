#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "platform/TWHandover.h"

// Brings the text to standard output. False, after one line on standard error, if it could not be written completely.
bool TWWriteToOutput(const std::string&);

// Prints what a command said. Returns its exit status, or a failure if it could not be printed.
int TWPrint(const TWCommandResult&);

enum class TWOutputFormat { Lines, JSON };

// A cleaning seen from a terminal: results lines on standard output, alerts on standard error and at the prompt. Main
// thread.
class TWTerminal final : public TWRunView, public TWApplicationWindows, public TWResultsView, public TWAlerts {
public:
    explicit TWTerminal(TWOutputFormat);

    // Becomes the view of the delegate, which outlives the terminal's last call. Before the first run.
    void attach(TWTidewellAppDelegate&);

    // From now on warnings count as confirmed.
    void confirmWarnings() { confirms_ = true; }

    // How the run ended. Nothing until it is over or was not begun.
    const std::optional<TWRunOutcome>& outcome() const { return outcome_; }

    // Answers the question at the prompt, if there is one, with no.
    void endQuestion();

    // False once results could not be written.
    bool outputWritten() const { return outputWritten_; }

    TWOutputFormat format() const { return format_; }

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
    void cleaningEnded(TWRunOutcome outcome) override { outcome_ = outcome; }

private:
    void ask(const TWAlert&);
    void readAnswer();
    void answer(TWAnswer);

    const TWOutputFormat format_;
    const bool coloured_;
    bool confirms_ = false;
    TWTidewellAppDelegate* delegate_ = nullptr;
    std::optional<TWRunOutcome> outcome_;
    std::function<void(TWAnswer)> answered_; // while a question is at the prompt
    std::unique_ptr<TWRunLoopHandle> prompt_;
    std::size_t printed_ = 0;
    bool outputWritten_ = true;
};
