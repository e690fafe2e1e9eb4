#include "cli/TWCleanCommand.h"

#include <algorithm>

TWCleanCommand::TWCleanCommand(TWTidewellAppDelegate& delegate, TWTerminal& terminal, const TWInvocation& invocation)
    : delegate_(delegate)
    , terminal_(terminal)
{
    delegate.setView(&terminal);
    delegate.resultsWindowController().setView(&terminal);
    terminal.setDelegate(delegate);
    if (!invocation.only)
        return;
    const auto& wanted = *invocation.only;
    const auto& table = TWCleanerTable();
    for (int position = 0; position < TWCleanerCount; ++position) {
        const bool on = std::find(wanted.begin(), wanted.end(), position) != wanted.end();
        delegate.settings().override(table[static_cast<std::size_t>(position)].key, on);
    }
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
    delegate_.clean();
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
