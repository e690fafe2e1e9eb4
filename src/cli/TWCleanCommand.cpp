#include "cli/TWCleanCommand.h"

#include "cli/TWTerminal.h"
#include "support/TWText.h"

namespace {

constexpr auto NoSuchCleaner = "There is no cleaner \"%@\". The cleaners are: %@.\n";
constexpr auto LaterCleaner = "The cleaner \"%@\" comes in a later version.\n";

constexpr auto NotRead = "Tidewell: nobody read the output, so the last %@ of the results are missing.\n";

constexpr auto Only = "--only";
constexpr auto Yes = "--yes";

constexpr TWRunLoop::Duration LongestTurn{ 60'000 }; // any length will do, because every event wakes the loop
constexpr TWRunLoop::Duration PatienceWithReader{ 1000 }; // after an interruption

std::string cleanerNames()
{
    std::string names;
    for (const auto& row : TWCleanerTable()) {
        if (row.available)
            names += (names.empty() ? "" : ", ") + std::string(row.name);
    }
    return names;
}

// Returns "" or one line about a name that is not a cleaner's.
std::string readChoice(const std::vector<std::string>& names, TWRunChoice& choice)
{
    for (const auto& name : names) {
        const int position = TWCleanerPosition(name);
        if (position < 0)
            return TWText::fill(NoSuchCleaner, { TWText::oneLine(name), cleanerNames() });
        const auto index = static_cast<std::size_t>(position);
        if (!TWCleanerTable()[index].available)
            return TWText::fill(LaterCleaner, { name });
        choice[index] = true;
    }
    return "";
}

int statusOf(TWRunOutcome outcome, const TWTerminal& terminal)
{
    if (outcome == TWRunOutcome::NothingRun)
        return TWStatus::NothingRun;
    return outcome == TWRunOutcome::Succeeded && terminal.outputWritten() ? TWStatus::Success : TWStatus::Failure;
}

TWCommandResult clean(const TWCommandContext& context, const TWInvocation& invocation)
{
    TWRunChoice choice{};
    if (const auto problem = TWReadCleaners(context, invocation, choice); !problem.empty())
        return TWWrongUse(problem);
    if (invocation.has(Yes))
        context.terminal->confirmWarnings();
    return TWRunCleaners(context, choice);
}

}

TWCommandGroup TWCleanCommands()
{
    using enum TWArgument::Kind;
    using enum TWArgument::Need;
    return { "", "",
        { { "clean", "Run the cleaners that are switched on", TWCommandKind::Cleans,
            { TWOnlyArgument("Run these cleaners instead: "),
                { Flag, Optional, Yes, "Do not ask when a cleaner warns" } },
            clean } } };
}

std::string TWReadCleaners(const TWCommandContext& context, const TWInvocation& invocation, TWRunChoice& choice)
{
    if (invocation.has(Only))
        return readChoice(invocation.texts(Only), choice);
    choice = context.delegate->switchedOn();
    return "";
}

TWArgument TWOnlyArgument(const std::string& purpose)
{
    return { TWArgument::Kind::OptionList, TWArgument::Need::Optional, Only, purpose + cleanerNames(), "A,B" };
}

TWCommandResult TWRunCleaners(const TWCommandContext& context, const TWRunChoice& choice)
{
    auto& delegate = *context.delegate;
    auto& terminal = *context.terminal;
    auto& runLoop = delegate.platform().runLoop;
    bool interrupted = false;
    const auto endRequests = context.host.whenToldToEnd(runLoop, [&] {
        // A closed terminal and some tools send two signals.
        if (std::exchange(interrupted, true))
            return;
        terminal.endQuestion();
        delegate.stop();
    });
    delegate.cleanForCommand(choice);
    while (!terminal.outcome())
        runLoop.turn(LongestTurn);
    delegate.resultsWindowController().flush();
    bool givenUp = false;
    std::unique_ptr<TWRunLoopHandle> patience;
    while (terminal.unprinted() > 0 && !givenUp) {
        if (interrupted && !patience)
            patience = runLoop.after(PatienceWithReader, [&] { givenUp = true; });
        runLoop.turn(LongestTurn);
    }
    const auto missing = givenUp ? TWText::fill(NotRead, { TWText::count(terminal.unprinted(), "line", "lines") }) : "";
    return { interrupted ? TWStatus::Interrupted : statusOf(*terminal.outcome(), terminal), "", missing };
}
