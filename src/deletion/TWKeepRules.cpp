#include "deletion/TWKeepRules.h"

#include "deletion/TWPathSteps.h"
#include "platform/TWTreeWalk.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

namespace {

constexpr auto Unreadable = "the keep list could not be read.";
constexpr auto Kept = "it is on the keep list (\"%@\").";
constexpr auto InsideKept = "it lies in \"%@\", which is on the keep list.";
constexpr auto HoldsKept = "it holds \"%@\", which is on the keep list.";
constexpr auto NameKept = "names like \"%@\" are on the keep list.";
constexpr auto InsideNameKept = "it lies in \"%@\", and names like \"%@\" are on the keep list.";
constexpr auto HoldsNameKept = "it holds \"%@\", and names like \"%@\" are on the keep list.";
constexpr auto HoldsMoved = "it holds \"%@\", which is on the keep list and has been moved.";
constexpr auto NotSearchedItself = "it could not be searched for what is on the keep list (%@).";
constexpr auto NotSearched = "it holds \"%@\", which could not be searched for what is on the keep list (%@).";
constexpr auto NotSearchedToTheEnd = "the search in it for kept items could not be finished.";

// What is kept of a tree, and where; at most one of the two.
struct Found {
    std::string objection;

    std::size_t size() const { return objection.empty() ? 0 : 1; }
};

}

TWKeepRules::TWKeepRules(const TWPlaces& places, const TWFileSystem& fileSystem, const TWKeepList& list)
    : fileSystem_(fileSystem)
    , list_(list)
{
    if (!list_ || list_->empty())
        return;
    trash_ = trash(places, fileSystem);
    if (!trash_.empty())
        trashIdentity_ = fileSystem.look(trash_).facts.identity;
    for (const auto& entry : *list_) {
        if (!entry.mistake().empty())
            continue;
        if (entry.kind == TWKeepEntry::Kind::Names) {
            patterns_.add(entry.text);
            continue;
        }
        // If a ".." follows a link, the path has two meanings: both are kept.
        const auto standardized = places.standardize(entry.text);
        const auto expanded = places.expand(entry.text);
        keepPath(entry, standardized);
        if (expanded.find("/..") != std::string::npos)
            keepPath(entry, expanded);
    }
    for (const auto& [path, place] : places_) {
        if (place.itself && place.look.isThere())
            kept_.push_back(&place);
    }
}

std::string TWKeepRules::trash(const TWPlaces& places, const TWFileSystem& fileSystem)
{
    if (!fileSystem.look(places.trash).isFolder() || !fileSystem.look(TWPath::join(places.trash, "files")).isFolder())
        return "";
    const auto trash = fileSystem.realPath(places.trash, TWLinkAtEnd::Follow);
    const auto home = fileSystem.realPath(places.home, TWLinkAtEnd::Follow);
    return trash && home && !TWPath::isAtOrBelow(*home, *trash) ? *trash : "";
}

void TWKeepRules::keepPath(const TWKeepEntry& entry, const std::string& path)
{
    const auto look = [&](const std::string& reached) { return place(reached).look; };
    auto steps = TWPathSteps(fileSystem_, path, look);
    const auto inTrash
        = [this](const TWPathStep& step) { return !trash_.empty() && TWPath::isAtOrBelow(step.path, trash_); };
    // What is in the Trash is not kept, and neither is the way to it.
    while (!steps.empty() && (!steps.back().last || inTrash(steps.back())))
        steps.pop_back();
    for (const auto& step : steps) {
        if (inTrash(step))
            continue;
        auto& found = place(step.path);
        auto& keeper = step.last ? found.itself : found.inside;
        keeper = keeper ? keeper : &entry;
        if (step.last && entry.kind == TWKeepEntry::Kind::FolderWithContents && !found.below)
            found.below = &entry;
    }
}

// Looks at each path once: most kept paths have their first folders in common.
TWKeepRules::Place& TWKeepRules::place(const std::string& path)
{
    const auto [found, isNew] = places_.try_emplace(path);
    auto& place = found->second;
    if (!isNew)
        return place;
    place.path = &found->first;
    place.look = fileSystem_.look(path);
    if (place.look.isThere())
        known_[place.look.facts.identity].push_back(&place);
    // The way to a path begins at "/", so its parent folder is known.
    if (const auto parent = places_.find(std::string(TWPath::parent(path))); path != "/" && parent != places_.end())
        parent->second.entries.emplace(TWPath::lastComponent(found->first), &place);
    return place;
}

TWKeepRules::Folder TWKeepRules::judgeFolder(const std::vector<TWAncestor>& chain, const std::string& realPath) const
{
    Folder judged;
    if (!list_) {
        judged.objection = Unreadable;
        return judged;
    }
    if (list_->empty())
        return judged;
    judged.inTrash = isInTrash(chain, realPath);
    if (judged.inTrash)
        return judged;
    judged.objection = objectionToChain(chain, realPath);
    if (judged.objection.empty())
        judged.objection = objectionToNames(realPath);
    if (const auto found = known_.find(chain.front().identity); found != known_.end())
        judged.places = found->second;
    // A folder that has been made or replaced since is known by its path alone.
    const auto found = places_.find(realPath);
    if (found != places_.end() && std::ranges::count(judged.places, &found->second) == 0)
        judged.places.push_back(&found->second);
    std::erase_if(judged.places, [](const Place* place) { return place->entries.empty(); });
    return judged;
}

bool TWKeepRules::isInTrash(const std::vector<TWAncestor>& chain, const std::string& realPath) const
{
    return !trash_.empty()
        && (TWPath::isAtOrBelow(realPath, trash_)
            || std::any_of(chain.begin(), chain.end(),
                [this](const TWAncestor& ancestor) { return ancestor.identity == trashIdentity_; }));
}

// The folder lies in a folder that is kept with everything in it, according to identities or texts.
std::string TWKeepRules::objectionToChain(const std::vector<TWAncestor>& chain, const std::string& realPath) const
{
    for (const auto& ancestor : chain) {
        const auto found = known_.find(ancestor.identity);
        if (found == known_.end())
            continue;
        for (const auto* known : found->second) {
            if (known->below)
                return TWText::fill(InsideKept, { known->below->text });
        }
    }
    for (std::string_view path = realPath; path.size() > 1; path = TWPath::parent(path)) {
        const auto found = places_.find(std::string(path));
        if (found != places_.end() && found->second.below)
            return TWText::fill(InsideKept, { found->second.below->text });
    }
    return "";
}

// The folder has a name that is kept, or lies in a folder with such a name.
std::string TWKeepRules::objectionToNames(const std::string& realPath) const
{
    for (std::string_view path = realPath; path.size() > 1 && !patterns_.empty(); path = TWPath::parent(path)) {
        const auto name = TWPath::lastComponent(path);
        if (const auto* pattern = patterns_.match(name))
            return TWText::fill(InsideNameKept, { name, pattern->text() });
    }
    return "";
}

std::string TWKeepRules::objectionToPlace(const Place& place, const TWFileLook& look) const
{
    if (place.itself)
        return TWText::fill(Kept, { place.itself->text });
    if (!place.inside || !look.isThere())
        return "";
    if (look.facts.kind == TWFileKind::Link)
        return TWText::fill(HoldsKept, { place.inside->text });
    // A file that has taken the place of a folder holds nothing.
    const auto* held = look.isFolder() ? existsBelow(place) : nullptr;
    return held ? TWText::fill(HoldsKept, { held->text }) : "";
}

// Returns the entry of something kept below that exists now or existed when the rules were made, or nullptr. A kept
// path at which there was never anything must not stop the deletion of the folder that it would be in.
const TWKeepEntry* TWKeepRules::existsBelow(const Place& place) const
{
    for (const auto& [name, child] : place.entries) {
        if (child->look.presence == TWPresence::Gone && fileSystem_.look(*child->path).presence == TWPresence::Gone)
            continue;
        if (child->itself)
            return child->itself;
        if (child->look.facts.kind == TWFileKind::Link && child->inside)
            return child->inside;
        if (const auto* held = existsBelow(*child))
            return held;
    }
    return nullptr;
}

std::string TWKeepRules::objection(const Folder& folder, std::string_view name, const TWFileLook& look) const
{
    if (folder.inTrash || isTrash(look))
        return "";
    if (!folder.objection.empty())
        return folder.objection;
    for (const auto* place : folder.places) {
        const auto found = place->entries.find(name);
        auto text = found == place->entries.end() ? std::string() : objectionToPlace(*found->second, look);
        if (!text.empty())
            return text;
    }
    if (const auto found = known_.find(look.facts.identity); look.isThere() && found != known_.end()) {
        for (const auto* known : found->second) {
            if (auto text = objectionToPlace(*known, look); !text.empty())
                return text;
        }
    }
    const auto* pattern = patterns_.match(name);
    return pattern ? TWText::fill(NameKept, { pattern->text() }) : "";
}

bool TWKeepRules::isTrash(const TWFileLook& look) const
{
    return !trash_.empty() && look.isThere() && look.facts.identity == trashIdentity_;
}

bool TWKeepRules::mustLookInside(const Folder& folder, const TWFileLook& look, Search search) const
{
    const bool searches = !patterns_.empty() || (search == Search::NamesAndMoved && !kept_.empty());
    return searches && !folder.inTrash && look.isFolder() && !isTrash(look);
}

// The identities of what was at kept places and is not there any more.
TWKeepRules::Identities TWKeepRules::moved() const
{
    Identities moved;
    for (const auto* place : kept_) {
        const auto now = fileSystem_.look(*place->path);
        if (!now.isThere() || now.facts.identity != place->look.facts.identity)
            moved.insert(place->look.facts.identity);
    }
    return moved;
}

// Looks for what is kept, everywhere but in the Trash. Stops entering folders once it has found something.
class TWKeepRules::Searcher final : public TWTreeVisitor<Found> {
public:
    Searcher(const TWKeepRules& rules, const TWFileLook& root, const std::string& rootPath, const Identities& moved)
        : rules_(rules)
        , root_(root.facts.identity)
        , rootPath_(rootPath)
        , moved_(moved)
    {
    }

    TWWalkStep visitRoot(std::size_t, const TWFileLook& look, Found& found) const override
    {
        if (look.isFolder() && look.facts.identity == root_)
            return TWWalkStep::Enter;
        say(found, NotSearchedToTheEnd);
        return TWWalkStep::PassOver;
    }

    TWWalkStep visit(const TWWalkedFolder& folder, const TWFolderEntry& entry, Found& found) const override
    {
        if (done_.load(std::memory_order_relaxed))
            return TWWalkStep::PassOver;
        const bool isTrash
            = TWPath::lastComponent(rules_.trash_) == entry.name && folder.pathOf(entry) == rules_.trash_;
        if (isTrash)
            return TWWalkStep::PassOver;
        if (const auto* pattern = rules_.patterns_.match(entry.name))
            say(found, TWText::fill(HoldsNameKept, { entry.name, pattern->text() }));
        else if (!moved_.empty() && !isElsewhere(folder.folder().look(entry)))
            say(found, TWText::fill(HoldsMoved, { entry.name }));
        else
            return TWWalkStep::Enter;
        return TWWalkStep::PassOver;
    }

    void notEntered(std::size_t, const std::string& path, int error, Found& found) const override
    {
        // What has been deleted in the meantime holds nothing.
        if (error == ENOENT)
            return;
        if (path == rootPath_)
            say(found, TWText::fill(NotSearchedItself, { TWErrorText(error) }));
        else
            say(found, TWText::fill(NotSearched, { TWPath::lastComponent(path), TWErrorText(error) }));
    }

private:
    bool isElsewhere(const TWFileLook& look) const
    {
        return look.presence == TWPresence::Gone || (look.isThere() && !moved_.contains(look.facts.identity));
    }

    void say(Found& found, std::string objection) const
    {
        found.objection = std::move(objection);
        done_.store(true, std::memory_order_relaxed);
    }

    const TWKeepRules& rules_;
    const TWFileIdentity root_;
    const std::string& rootPath_;
    const Identities& moved_;
    mutable std::atomic<bool> done_{ false };
};

std::string TWKeepRules::objectionInside(
    const std::string& realPath, const TWFileLook& look, Search search, const TWCancellation& cancellation) const
{
    const auto movedAway = search == Search::NamesAndMoved ? moved() : Identities();
    if (patterns_.empty() && movedAway.empty())
        return "";
    std::string objection;
    const auto receive = [&](Found found) {
        if (objection.empty())
            objection = std::move(found.objection);
    };
    const Searcher searcher(*this, look, realPath, movedAway);
    const auto end = TWWalkTrees<Found>(fileSystem_, { { realPath } }, searcher, receive, cancellation);
    return objection.empty() && end != TWWalkEnd::Complete ? NotSearchedToTheEnd : objection;
}
