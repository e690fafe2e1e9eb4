#include "app/TWResultsActions.h"

#include "support/TWPath.h"
#include "support/TWText.h"

namespace {

constexpr auto Gone = "\"%@\" is gone. The nearest folder that still exists is shown instead.";
constexpr auto NotSeen = "\"%@\" cannot be looked at. The nearest folder that can is shown instead.";
constexpr auto Outside = "\"%@\" is outside the sandbox, so it is not shown.";
constexpr auto NoFileManager = "\"%@\" cannot be shown, because no file manager could be opened.";
constexpr auto NothingToOpen = "\"%@\" is gone.";
constexpr auto NoProgram = "\"%@\" cannot be opened, because no program could be started for it.";
constexpr auto NothingToKeep = "\"%@\" is gone, so there is nothing to keep.";
constexpr auto Kept = "\"%@\" is on the keep list now. No cleaner will delete it.";

}

TWResultsActions::TWResultsActions(Context context)
    : context_(std::move(context))
{
}

void TWResultsActions::look(const std::string& path, std::function<void(bool exists)> found)
{
    looking_ = std::make_unique<TWBackgroundStream<bool>>(
        context_.runLoop, 1,
        [path, &fileSystem = context_.fileSystem](
            auto& sink) { sink.put(fileSystem.look(path).presence != TWPresence::Gone); },
        std::move(found), [] {});
}

// Any thread.
TWResultsActions::Place TWResultsActions::nearest(const TWFileSystem& fileSystem, const std::string& path)
{
    const auto item = fileSystem.look(path).presence;
    auto existing = TWPath::withoutTrailingSlashes(path);
    auto real = item == TWPresence::There ? fileSystem.realPath(existing) : std::nullopt;
    while (!real && existing.starts_with('/') && existing != "/") {
        existing = std::string(TWPath::parent(existing));
        if (fileSystem.look(existing, TWLinkAtEnd::Follow).isFolder())
            real = fileSystem.realPath(existing, TWLinkAtEnd::Follow);
    }
    return { real.value_or("/"), item };
}

void TWResultsActions::show(const std::string& path, Said said)
{
    finding_ = std::make_unique<TWBackgroundStream<Place>>(
        context_.runLoop, 1,
        [path, &fileSystem = context_.fileSystem](auto& sink) { sink.put(nearest(fileSystem, path)); },
        [this, path, said = std::move(said)](const Place& place) { showPlace(path, place, said); }, [] {});
}

void TWResultsActions::showPlace(const std::string& path, const Place& place, const Said& said)
{
    const auto& places = context_.places;
    if (places.sandboxed() && !TWPath::isAtOrBelow(place.realPath, places.sandboxRoot)) {
        said(TWText::fill(Outside, { path }));
        return;
    }
    const auto done = [path, said, presence = place.presence, life = std::weak_ptr(life_)](bool shown) {
        if (life.expired())
            return;
        if (!shown)
            said(TWText::fill(NoFileManager, { path }));
        else if (presence == TWPresence::There)
            said("");
        else
            said(TWText::fill(presence == TWPresence::Gone ? Gone : NotSeen, { path }));
    };
    if (place.presence == TWPresence::There)
        context_.fileManager.showItem(place.realPath, done);
    else
        context_.fileManager.showFolder(place.realPath, done);
}

void TWResultsActions::open(const std::string& path, Said said)
{
    const auto done = [path, said, life = std::weak_ptr(life_)](bool opened) {
        if (!life.expired())
            said(opened ? "" : TWText::fill(NoProgram, { path }));
    };
    opening_ = std::make_unique<TWBackgroundStream<TWPresence>>(
        context_.runLoop, 1,
        [path, &fileSystem = context_.fileSystem](auto& sink) { sink.put(fileSystem.look(path).presence); },
        [this, path, said = std::move(said), done](TWPresence presence) {
            if (presence == TWPresence::Gone)
                said(TWText::fill(NothingToOpen, { path }));
            else
                context_.fileManager.open(path, done);
        },
        [] {});
}

std::string TWResultsActions::keep(const std::string& path)
{
    if (context_.fileSystem.look(path).presence == TWPresence::Gone)
        return TWText::fill(NothingToKeep, { path });
    const auto problem = context_.keep(path);
    return problem.empty() ? TWText::fill(Kept, { path }) : problem;
}
