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
constexpr auto NotSearched = "it holds \"%@\", which could not be searched for names on the keep list (%@).";
constexpr auto NotSearchedToTheEnd = "it could not be searched for names on the keep list.";

// What is kept of a tree, and where; at most one of the two.
struct Found {
    std::string objection;

    std::size_t size() const { return objection.empty() ? 0 : 1; }
};

}

TWKeepRules::TWKeepRules(const TWPlaces& places, const TWFileSystem& fileSystem, const TWKeepList& list)
    : list_(list)
{
    if (!list_ || list_->empty())
        return;
    const auto trash = fileSystem.realPath(places.trash, TWLinkAtEnd::Follow);
    const auto home = fileSystem.realPath(places.home, TWLinkAtEnd::Follow);
    // A Trash that leads to the home folder or above it must not switch the keep list off.
    if (trash && home && !TWPath::isAtOrBelow(*home, *trash)) {
        trash_ = *trash;
        trashIdentity_ = fileSystem.look(trash_).facts.identity;
    }
    for (const auto& entry : *list_) {
        if (!entry.mistake().empty())
            continue;
        if (entry.kind == TWKeepEntry::Kind::Names) {
            patterns_.emplace_back(entry.text);
            continue;
        }
        // If a ".." follows a link, the path has two meanings: both are kept.
        const auto standardized = places.standardize(entry.text);
        const auto expanded = places.expand(entry.text);
        keepPath(fileSystem, entry, standardized);
        if (expanded.find("/..") != std::string::npos)
            keepPath(fileSystem, entry, expanded);
    }
}

void TWKeepRules::keepPath(const TWFileSystem& fileSystem, const TWKeepEntry& entry, const std::string& path)
{
    const auto look = [&](const std::string& reached) { return place(fileSystem, reached).look; };
    auto steps = TWPathSteps(fileSystem, path, look);
    const auto inTrash
        = [this](const TWPathStep& step) { return !trash_.empty() && TWPath::isAtOrBelow(step.path, trash_); };
    // What is in the Trash is not kept, and neither is the way to it.
    while (!steps.empty() && (!steps.back().last || inTrash(steps.back())))
        steps.pop_back();
    for (const auto& step : steps) {
        if (inTrash(step))
            continue;
        auto& found = place(fileSystem, step.path);
        auto& keeper = step.last ? found.itself : found.inside;
        keeper = keeper ? keeper : &entry;
        if (step.last && entry.kind == TWKeepEntry::Kind::FolderWithContents && !found.below)
            found.below = &entry;
    }
}

// Looks at each path once: most kept paths have their first folders in common.
TWKeepRules::Place& TWKeepRules::place(const TWFileSystem& fileSystem, const std::string& path)
{
    const auto [found, isNew] = places_.try_emplace(path);
    auto& place = found->second;
    if (!isNew)
        return place;
    place.look = fileSystem.look(path);
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
        if (const auto* pattern = patternFor(name))
            return TWText::fill(InsideNameKept, { name, pattern->text() });
    }
    return "";
}

const TWNamePattern* TWKeepRules::patternFor(std::string_view name) const
{
    const auto found = std::find_if(
        patterns_.begin(), patterns_.end(), [&](const TWNamePattern& pattern) { return pattern.matches(name); });
    return found == patterns_.end() ? nullptr : &*found;
}

std::string TWKeepRules::objectionToPlace(const Place& place, const TWFileLook& look)
{
    if (place.itself)
        return TWText::fill(Kept, { place.itself->text });
    // A file that has taken the place of a folder holds nothing.
    if (place.inside && look.isThere() && (look.isFolder() || look.facts.kind == TWFileKind::Link))
        return TWText::fill(HoldsKept, { place.inside->text });
    return "";
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
    const auto* pattern = patternFor(name);
    return pattern ? TWText::fill(NameKept, { pattern->text() }) : "";
}

bool TWKeepRules::isTrash(const TWFileLook& look) const
{
    return !trash_.empty() && look.isThere() && look.facts.identity == trashIdentity_;
}

bool TWKeepRules::mustLookInside(const Folder& folder, const TWFileLook& look) const
{
    return !patterns_.empty() && !folder.inTrash && look.isFolder() && !isTrash(look);
}

// Looks for names that are kept, everywhere but in the Trash. Stops entering folders once it has found one.
class TWKeepRules::Search final : public TWTreeVisitor<Found> {
public:
    Search(const TWKeepRules& rules, const TWFileLook& root)
        : rules_(rules)
        , root_(root.facts.identity)
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
        const auto* pattern = rules_.patternFor(entry.name);
        if (!pattern)
            return TWWalkStep::Enter;
        say(found, TWText::fill(HoldsNameKept, { entry.name, pattern->text() }));
        return TWWalkStep::PassOver;
    }

    void notEntered(std::size_t, const std::string& path, int error, Found& found) const override
    {
        // What has been deleted in the meantime holds nothing.
        if (error != ENOENT)
            say(found, TWText::fill(NotSearched, { TWPath::lastComponent(path), TWErrorText(error) }));
    }

private:
    void say(Found& found, std::string objection) const
    {
        found.objection = std::move(objection);
        done_.store(true, std::memory_order_relaxed);
    }

    const TWKeepRules& rules_;
    const TWFileIdentity root_;
    mutable std::atomic<bool> done_{ false };
};

std::string TWKeepRules::objectionInside(const TWFileSystem& fileSystem, const std::string& realPath,
    const TWFileLook& look, const TWCancellation& cancellation) const
{
    std::string objection;
    const auto receive = [&](Found found) {
        if (objection.empty())
            objection = std::move(found.objection);
    };
    const auto end = TWWalkTrees<Found>(fileSystem, { { realPath } }, Search(*this, look), receive, cancellation);
    return objection.empty() && end != TWWalkEnd::Complete ? NotSearchedToTheEnd : objection;
}
