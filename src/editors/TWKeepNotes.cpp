#include "editors/TWKeepNotes.h"

#include "support/TWPath.h"
#include "support/TWText.h"

namespace {

constexpr auto KeepsNothing = "Keeps nothing: the entry %@.";
constexpr auto Doubtful = "May not keep what you mean: the entry %@.";
constexpr auto KeepsEverything = "Keeps everything: outside the Trash nothing would be deleted any more.";
constexpr auto KeepsHome = "Keeps everything in your home folder, except for the Trash.";
constexpr auto Missing = "Does not exist now";
constexpr auto NotLookedAt = "Could not be looked at: %@";

constexpr std::size_t NotesPerTurn = 100;

bool isPath(const TWKeepEntry& entry)
{
    return entry.kind != TWKeepEntry::Kind::Names && entry.mistake().empty();
}

// What is said of an entry that keeps far more than most users want, or "".
const char* excess(const TWKeepEntry& entry, const TWPlaces& places)
{
    if (entry.kind == TWKeepEntry::Kind::Names)
        return entry.text.find_first_not_of('*') == std::string::npos ? KeepsEverything : "";
    const auto folder = places.standardize(entry.text);
    if (entry.kind != TWKeepEntry::Kind::FolderWithContents || !TWPath::isAtOrBelow(places.home, folder))
        return "";
    return folder == "/" ? KeepsEverything : KeepsHome;
}

// Any thread.
TWKeepNote lookAt(const TWFileSystem& fileSystem, const TWPlaces& places, const std::string& text)
{
    // They differ if the path has a ".."; then both are kept.
    const auto look = fileSystem.look(places.expand(text));
    const auto standardized = fileSystem.look(places.standardize(text));
    if (look.isThere() || standardized.isThere())
        return {};
    for (const auto& each : { look, standardized }) {
        if (each.presence == TWPresence::Unknown)
            return { TWText::fill(NotLookedAt, { TWErrorText(each.error) }), true };
    }
    return { Missing };
}

}

TWKeepNotes::TWKeepNotes(const TWDeletionTools& tools, std::function<void()> changed)
    : tools_(tools)
    , changed_(std::move(changed))
{
}

void TWKeepNotes::find(const std::vector<TWKeepRecord>& records)
{
    looking_.reset();
    std::vector<std::string> texts;
    for (const auto& record : records) {
        if (isPath(record.entry()) && !found_.contains(record.entry().text))
            texts.push_back(record.entry().text);
    }
    if (texts.empty())
        return;
    looking_ = std::make_unique<TWBackgroundStream<Found>>(
        tools_.runLoop, NotesPerTurn,
        [texts = std::move(texts), places = tools_.places, &fileSystem = tools_.fileSystem](auto& sink) {
            for (const auto& text : texts) {
                if (!sink.cancellation().cancelled())
                    sink.put({ text, lookAt(fileSystem, places, text) });
            }
        },
        [this](Found found) {
            found_.insert(std::move(found));
            changed_();
        },
        [] {});
}

void TWKeepNotes::clear()
{
    looking_.reset();
    found_.clear();
}

TWKeepNote TWKeepNotes::note(const TWKeepEntry& entry) const
{
    if (const auto mistake = entry.mistake(); !mistake.empty())
        return { TWText::fill(KeepsNothing, { mistake }), true };
    if (const auto doubt = entry.doubt(); !doubt.empty())
        return { TWText::fill(Doubtful, { doubt }), true };
    if (const std::string text = excess(entry, tools_.places); !text.empty())
        return { text, true };
    const auto found = found_.find(entry.text);
    return isPath(entry) && found != found_.end() ? found->second : TWKeepNote();
}
