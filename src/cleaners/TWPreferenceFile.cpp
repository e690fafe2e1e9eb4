#include "cleaners/TWPreferenceFile.h"

#include "formats/TWKeyValueDatabase.h"
#include "platform/TWRunLoop.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <cerrno>
#include <mutex>

namespace {

constexpr auto Changed = "it has changed meanwhile";
constexpr auto NotRegular = "\"%@\" beside it is not a regular file";
constexpr int MostAttempts = 3; // to change a file that changes meanwhile
constexpr auto UnknownFormat = "its format is unknown";
constexpr std::size_t Beginning = 16;

// When a process closes a file, it loses its locks on it, and with them the protection of a database that is being
// changed. So nobody else may open one meanwhile.
std::mutex oneAtATime;

std::string problemOf(const TWFoundEntries& found)
{
    return found.problem.empty() && found.format.empty() ? UnknownFormat : found.problem;
}

}

TWPreferenceFile::TWPreferenceFile(const TWPreferenceFiles& files, const TWFileSystem& fileSystem,
    const TWHeldFolder& folder, std::string realFolder, std::string name)
    : files_(files)
    , fileSystem_(fileSystem)
    , folder_(folder)
    , realFolder_(std::move(realFolder))
    , name_(std::move(name))
{
}

std::string TWPreferenceFile::path() const
{
    return TWPath::join(realFolder_, name_);
}

bool TWPreferenceFile::isStill(const TWFileFacts& facts) const
{
    const auto look = folder_.look(name_);
    return look.isThere() && look.facts.identity == facts.identity
        && fileSystem_.look(path()).facts.identity == facts.identity;
}

TWPreferenceFile::Opened TWPreferenceFile::open() const
{
    Opened opened;
    opened.contents = files_.readBeginning(folder_, name_, Beginning);
    opened.isDatabase = TWFileFormats::isDatabase(opened.contents.bytes);
    if (opened.contents.error == 0 && !opened.isDatabase)
        opened.contents = files_.read(folder_, name_, TWFileFormats::MaximumBytes);
    if (opened.isDatabase && opened.contents.facts.size > TWKeyValueDatabase::MaximumBytes)
        opened.contents.error = EFBIG;
    opened.missing = opened.contents.error == ENOENT;
    if (opened.contents.error != 0)
        opened.problem = TWErrorText(opened.contents.error);
    else if (opened.isDatabase)
        opened.problem = problemBeside();
    return opened;
}

// The database's own files beside it would be opened by name; a pipe would never answer.
std::string TWPreferenceFile::problemBeside() const
{
    for (const auto* ending : { "-journal", "-wal", "-shm" }) {
        const auto look = folder_.look(name_ + ending);
        if (look.presence != TWPresence::Gone && (!look.isThere() || look.facts.kind != TWFileKind::File))
            return TWText::fill(NotRegular, { name_ + ending });
    }
    return "";
}

TWPreferenceFile::Found TWPreferenceFile::find(const std::vector<std::string>& keys) const
{
    const std::lock_guard lock(oneAtATime);
    const auto opened = open();
    Found found{ opened.contents.facts, {}, opened.missing };
    if (!opened.problem.empty()) {
        found.entries.problem = opened.problem;
        return found;
    }
    found.entries
        = opened.isDatabase ? TWKeyValueDatabase::find(path(), keys) : TWFileFormats::find(opened.contents.bytes, keys);
    found.entries.problem = problemOf(found.entries);
    if (!isStill(found.facts))
        found.entries.problem = Changed;
    return found;
}

TWPreferenceFile::Removed TWPreferenceFile::remove(
    const std::vector<std::string>& keys, const Found* seen, const TWCancellation& cancellation) const
{
    const std::lock_guard lock(oneAtATime);
    for (int attempt = 0; attempt < MostAttempts; ++attempt) {
        bool isStale = false;
        auto removed = removeNow(keys, seen, cancellation, isStale);
        if (!isStale)
            return removed;
    }
    Removed changed;
    changed.entries.problem = Changed;
    return changed;
}

TWPreferenceFile::Removed TWPreferenceFile::removeNow(
    const std::vector<std::string>& keys, const Found* seen, const TWCancellation& cancellation, bool& isStale) const
{
    auto opened = open();
    Removed removed{ { opened.contents.facts, {}, opened.missing }, false, "", "", opened.contents.facts };
    auto& problem = removed.entries.problem;
    problem = opened.problem;
    // The log of a database may have changed although its file has not.
    removed.hasChanged = problem.empty() && seen
        && (!seen->facts.isUnchanged(removed.facts)
            || (opened.isDatabase && TWKeyValueDatabase::find(path(), keys).counts != seen->entries.counts));
    if (!problem.empty() || removed.hasChanged || cancellation.cancelled())
        return removed;
    if (opened.isDatabase)
        return removeRows(keys, removed.facts);
    std::optional<std::string> remaining;
    removed.entries = TWFileFormats::cut(opened.contents.bytes, keys, remaining);
    problem = problemOf(removed.entries);
    removed.hasChanged = problem.empty() && seen && removed.entries.counts != seen->entries.counts;
    if (removed.hasChanged)
        return removed;
    // Replacing a file that loses nothing would only separate it from its other names.
    if (!problem.empty() || cancellation.cancelled() || (!remaining && removed.facts.links > 1))
        return removed;
    const auto replaced = files_.replace(folder_, name_, removed.facts, remaining ? *remaining : opened.contents.bytes);
    isStale = replaced.error == ESTALE;
    if (replaced.error != 0)
        removed.problem = TWErrorText(replaced.error);
    else
        removed.now = replaced.facts;
    return removed;
}

// A database is changed in a transaction of its own kind.
TWPreferenceFile::Removed TWPreferenceFile::removeRows(
    const std::vector<std::string>& keys, const TWFileFacts& facts) const
{
    Removed removed;
    removed.facts = facts;
    removed.entries = TWKeyValueDatabase::cut(path(), keys, [&] { return isStill(facts); });
    const auto& counts = removed.entries.counts;
    const bool anyGone = std::any_of(counts.begin(), counts.end(), [](std::size_t count) { return count > 0; });
    if (anyGone)
        removed.traces = std::exchange(removed.entries.problem, "");
    removed.now = folder_.look(name_).facts;
    if (!isStill(facts))
        removed.entries.problem = Changed;
    return removed;
}

std::vector<TWFoundKey> TWPreferenceFile::findKeywords(const std::vector<std::string>& keywords) const
{
    const std::lock_guard lock(oneAtATime);
    const auto opened = open();
    if (!opened.problem.empty())
        return {};
    return opened.isDatabase ? TWKeyValueDatabase::findKeys(path(), keywords)
                             : TWFileFormats::findKeys(opened.contents.bytes, keywords);
}
