#include "cli/TWCommandRunner.h"

#include "support/TWText.h"

namespace {

using namespace std::chrono_literals;

constexpr auto KeptAsDamaged
    = "It was written anew now; the old file was kept as \"%@.damaged\" (and a number when that was taken).\n";

constexpr auto ListsLock = ".lists.lock";
constexpr auto Patience = 2000ms;

// A settings or list file and what is wrong with it.
struct Trouble {
    std::string file;
    std::string problem;
};

// Of all files, those without a problem included, always in the same order.
std::vector<Trouble> troubles(TWTidewellAppDelegate& delegate)
{
    const auto& userDefaults = delegate.settings().userDefaults();
    std::vector<Trouble> all{ { userDefaults.file(), userDefaults.problem() } };
    for (const auto* editor : delegate.editors().all())
        all.push_back({ editor->file(), editor->problem() });
    return all;
}

TWCommandResult runOnLists(const TWCommandContext& context, const TWInvocation& invocation)
{
    const auto before = troubles(*context.delegate);
    auto result = invocation.row->run(context, invocation);
    const auto after = troubles(*context.delegate);
    for (std::size_t index = 0; index < before.size(); ++index) {
        const auto& [file, problem] = before[index];
        if (problem.empty())
            continue;
        result.err += TWText::oneLine(problem) + "\n";
        // A problem also ends if somebody has repaired the file meanwhile.
        if (after[index].problem.empty() && context.host.fileSystem().look(file + ".damaged").isThere())
            result.err += TWText::fill(KeptAsDamaged, { TWText::oneLine(file) });
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
    // The data folder tells a window whose lists are meant.
    dataFolder.make();
    if (const auto answer = handover.handOver(change.words, change.workingFolder))
        return *answer;
    const auto locked = TWLockLists(locks, dataFolder);
    if (locked.heldByAnother)
        return { TWStatus::NothingRun, "", TWListsBusy };
    // A window that was starting may have held the lock.
    if (const auto answer = handover.handOver(change.words, change.workingFolder))
        return *answer;
    return change.carryOutHere();
}

TWLockResult TWLockLists(TWLocks& locks, const TWDataFolder& dataFolder)
{
    return TWWaitForLock(locks, dataFolder.file(ListsLock), Patience);
}
