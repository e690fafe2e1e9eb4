#pragma once

#include "app/TWTidewellAppDelegate.h"
#include "cli/TWOutput.h"
#include "platform/TWHandover.h"

// Makes each line of a text safe for a terminal; an alert's text can have several lines, with file names in them.
std::string TWHarmlessLines(std::string_view text);

// Prints the output of a command. Returns the command's exit status, or Failure if the output could not be written.
int TWPrint(const TWCommandResult&);

enum class TWOutputFormat { Lines, JSON };

// The view of a cleaning on a terminal: results on standard output, alerts on standard error and at a prompt. Main
// thread.
class TWTerminal final : public TWRunView, public TWApplicationWindows, public TWResultsView, public TWAlerts {
public:
    TWTerminal(TWOutputFormat, TWRunLoop&);

    // Becomes the delegate's view. Call this before the first run. The delegate must outlive the last call of the
    // terminal.
    void attach(TWTidewellAppDelegate&);

    // From now on warnings count as confirmed.
    void confirmWarnings() { confirms_ = true; }

    // How the run ended. Nothing until a run has ended.
    const std::optional<TWRunOutcome>& outcome() const { return outcome_; }

    // Answers an open question at the prompt with no.
    void endQuestion();

    // How many lines of the results wait for a reader of the output that stands still.
    std::size_t unprinted() const;

    // False after results could not be written.
    bool outputWritten() const { return !output_.failed(); }

    TWOutputFormat format() const { return format_; }

    void show(const TWAlert&, std::function<void(TWAnswer)> answered) override;

    void messagesRemoved() override { printed_ = 0; }
    void messagesAdded(std::size_t) override { printMessages(); }

    void showLight(int, TWLight) override { }
    void startSpinning(int) override { }
    void stopSpinning(int) override { }
    void setCleanEnabled(bool) override { }
    void bringToFront(TWWindow) override { }
    bool isKeyWindow(TWWindow) const override { return false; }
    void activate() override { }
    void requestUserAttention() override { }
    void terminate() override { }
    bool showsProgress() const override { return redraws_; }
    void showProgress(const TWRunProgress&) override;
    void showOutcome(const TWOutcome&) override;
    void cleaningEnded(TWRunOutcome outcome) override { outcome_ = outcome; }

private:
    void printMessages();
    void drawProgress(const std::string& text);
    void ask(const TWAlert&);
    void readAnswer();
    void answer(TWAnswer);

    const TWOutputFormat format_;
    const bool coloured_;
    const bool redraws_; // the last line on standard error tells the progress
    std::string progress_; // as it is drawn; "" if it is not
    bool confirms_ = false;
    TWTidewellAppDelegate* delegate_ = nullptr;
    std::optional<TWRunOutcome> outcome_;
    std::function<void(TWAnswer)> answered_; // set while a question is at the prompt
    std::unique_ptr<TWRunLoopHandle> prompt_;
    TWOutput output_;
    std::size_t printed_ = 0; // messages
};
