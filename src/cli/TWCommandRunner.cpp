#include "cli/TWCommandRunner.h"

#include "support/TWText.h"

#include <algorithm>

namespace {

using namespace std::chrono_literals;

constexpr auto KeptAsDamaged = "It was written anew now; the old file was kept as \"%@\".\n";

constexpr auto Busy = "Another Tidewell command is changing the lists. Please try again.\n";
constexpr auto NoLock
    = "The file \"%@\", which keeps two programs from changing the lists at once, could not be locked "
      "(%@). Please remove what is at its place, then try again.\n";

constexpr auto ListsLock = ".lists.lock";
constexpr auto Patience = 2000ms;

// The names under which damaged lists were kept when they were replaced.
std::vector<std::string> keptLists(TWTidewellAppDelegate& delegate)
{
    std::vector<std::string> kept;
    for (const auto* editor : delegate.editors().all())
        kept.push_back(editor->keptAs());
    return kept;
}

TWCommandResult runOnLists(const TWCommandContext& context, const TWInvocation& invocation)
{
    auto& delegate = *context.delegate;
    const auto before = delegate.problems();
    const auto keptBefore = keptLists(delegate);
    auto result = invocation.row->run(context, invocation);
    // Writing a file removes its problem or changes it.
    for (const auto& problem : before)
        result.err += TWText::oneLine(problem) + "\n";
    for (const auto& problem : delegate.problems()) {
        if (std::find(before.begin(), before.end(), problem) == before.end())
            result.err += TWText::oneLine(problem) + "\n";
    }
    const auto kept = keptLists(delegate);
    for (std::size_t index = 0; index < kept.size(); ++index) {
        if (kept[index] != keptBefore[index])
            result.err += TWText::fill(KeptAsDamaged, { TWText::oneLine(kept[index]) });
    }
    return result;
}

}

TWCommandResult TWRunCommand(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto kind = invocation.row->kind;
    return kind == TWCommandKind::Reads || kind == TWCommandKind::ChangesLists
        ? runOnLists(context, invocation)
        : invocation.row->run(context, invocation);
}

TWCommandResult TWChangeLists(
    const TWHandover& handover, TWLocks& locks, const TWDataFolder& dataFolder, const TWListChange& change)
{
    // The handover identifies the lists by the data folder, so the folder must exist.
    dataFolder.make();
    if (const auto answer = handover.handOver(change.words, change.workingFolder))
        return *answer;
    const auto locked = TWLockLists(locks, dataFolder);
    if (const auto refusal = TWRefusalOfLists(locked, dataFolder); !refusal.empty())
        return { TWStatus::NothingRun, "", refusal };
    // Perhaps a starting window held the lock and listens now.
    if (const auto answer = handover.handOver(change.words, change.workingFolder))
        return *answer;
    return change.carryOutHere();
}

TWLockResult TWLockLists(TWLocks& locks, const TWDataFolder& dataFolder)
{
    return TWWaitForLock(locks, dataFolder.file(ListsLock), Patience);
}

std::string TWRefusalOfLists(const TWLockResult& result, const TWDataFolder& dataFolder)
{
    if (result.heldByAnother)
        return Busy;
    return result.mayBeHeld()
        ? TWText::fill(NoLock, { TWText::oneLine(dataFolder.file(ListsLock)), TWErrorText(result.error) })
        : "";
}
