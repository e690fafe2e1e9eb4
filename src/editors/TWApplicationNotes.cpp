#include "editors/TWApplicationNotes.h"

namespace {

constexpr auto NotInstalled = "Not installed any more";

constexpr std::size_t NotesPerTurn = 100;

// Any thread. A path that is not absolute leads nowhere.
TWApplicationNote lookAt(const TWFileSystem& fileSystem, const TWApplications& applications, const std::string& path)
{
    if (!path.starts_with('/'))
        return { "", NotInstalled };
    std::string problem;
    if (const auto application = applications.open(path, problem))
        return { application->icon, "" };
    const bool isGone = fileSystem.look(path, TWLinkAtEnd::Follow).presence == TWPresence::Gone;
    return { "", isGone ? NotInstalled : problem };
}

}

TWApplicationNotes::TWApplicationNotes(
    const TWDeletionTools& tools, const TWApplications& applications, std::function<void()> changed)
    : tools_(tools)
    , applications_(applications)
    , changed_(std::move(changed))
{
}

void TWApplicationNotes::find(std::vector<std::string> paths)
{
    looking_.reset();
    std::erase_if(paths, [this](const auto& path) { return found_.contains(path); });
    if (paths.empty())
        return;
    looking_ = std::make_unique<TWBackgroundStream<Found>>(
        tools_.runLoop, NotesPerTurn,
        [paths = std::move(paths), &fileSystem = tools_.fileSystem, &applications = applications_](auto& sink) {
            for (const auto& path : paths) {
                if (!sink.cancellation().cancelled())
                    sink.put({ path, lookAt(fileSystem, applications, path) });
            }
        },
        [this](Found found) {
            found_.insert(std::move(found));
            changed_();
        },
        [] {});
}

void TWApplicationNotes::clear()
{
    looking_.reset();
    found_.clear();
}

TWApplicationNote TWApplicationNotes::note(const std::string& path) const
{
    const auto found = found_.find(path);
    return found == found_.end() ? TWApplicationNote() : found->second;
}
