#include "cli/TWCleanCommand.h"

#include <algorithm>

TWCleanCommand::TWCleanCommand(TWTidewellAppDelegate& delegate, TWTerminal& terminal, const TWInvocation& invocation)
    : delegate_(delegate)
    , terminal_(terminal)
    , invocation_(invocation)
{
    delegate.setViews(&terminal, &terminal);
    delegate.resultsWindowController().setView(&terminal);
    terminal.setDelegate(delegate);
}

void TWCleanCommand::start(std::function<void(int)> ended)
{
    if (interrupted_) {
        ended(TWStatus::Interrupted);
        return;
    }
    ended_ = std::move(ended);
    terminal_.setEnded([this](TWRunOutcome outcome) { finish(outcome); });
    delegate_.prepareForCommand();
    auto choice = delegate_.switchedOn();
    if (invocation_.only) {
        choice = {};
        for (const int position : *invocation_.only)
            choice[static_cast<std::size_t>(position)] = true;
    }
    delegate_.cleanForCommand(choice);
}

void TWCleanCommand::interrupt()
{
    interrupted_ = true;
    terminal_.endQuestion();
    delegate_.stop();
}

void TWCleanCommand::finish(TWRunOutcome outcome)
{
    delegate_.resultsWindowController().flush();
    delegate_.applicationWillTerminate();
    if (interrupted_)
        ended_(TWStatus::Interrupted);
    else if (outcome == TWRunOutcome::NothingRun)
        ended_(TWStatus::NothingRun);
    else
        ended_(outcome == TWRunOutcome::Succeeded && terminal_.outputWritten() ? TWStatus::Success : TWStatus::Failure);
}
