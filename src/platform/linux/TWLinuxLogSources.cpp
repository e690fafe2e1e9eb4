#include "platform/linux/TWLinuxLogSources.h"

#include "platform/linux/TWLinuxLogTable.h"
#include "support/TWNamePattern.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <unordered_set>

namespace {

constexpr std::size_t MostMatches = 1000; // of one pattern, and of Flatpaks

// The folders below which the places of the table are.
struct Bases {
    std::string home, config, data, state, cache;
    std::string note; // for the names of sources

    const std::string& of(TWLinuxBase base) const
    {
        switch (base) {
        case TWLinuxBase::Config:
            return config;
        case TWLinuxBase::Data:
            return data;
        case TWLinuxBase::State:
            return state;
        case TWLinuxBase::Cache:
            return cache;
        default:
            return home;
        }
    }
};

struct Found {
    TWLogSource source;
    std::string realPath;
};

// "Program (match, note)"
std::string nameOf(const std::string& program, const std::string& match, const std::string& note)
{
    const std::string details = match.empty() || note.empty() ? match + note : match + ", " + note;
    return details.empty() ? program : program + " (" + TWText::oneLine(details) + ")";
}

// Looks for the logs of one user.
class Search {
public:
    Search(const TWFileSystem& fileSystem, const TWPlaces& places);

    std::vector<TWLogSource> sources();

private:
    std::string real(const std::string& path) const
    {
        return fileSystem_.realPath(path, TWLinkAtEnd::Follow).value_or("");
    }
    std::vector<Bases> allBases() const;
    std::vector<std::string> matches(const std::string& folder, const std::string& pattern) const;
    void addPlace(const Bases&, const TWLinuxLogPlace&);
    void add(const TWLinuxLogPlace&, std::string name, const std::string& path);
    bool isAllowed(const Found&) const;
    void removeDoubles();

    const TWFileSystem& fileSystem_;
    const TWPlaces& places_;
    std::vector<std::string> folders_; // real paths of the user's folders
    std::vector<std::string> tops_; // those of them that are not inside the home folder
    const std::string systemLogs_; // "" if there are none
    std::vector<Found> found_;
};

Search::Search(const TWFileSystem& fileSystem, const TWPlaces& places)
    : fileSystem_(fileSystem)
    , places_(places)
    , systemLogs_(real(places.systemLogs))
{
    // A folder that is named by a variable may be anywhere, but a link in the home folder does not lead out of it.
    for (const auto* folder :
        { &places.home, &places.configHome, &places.dataHome, &places.stateHome, &places.cacheHome }) {
        const auto path = real(*folder);
        if (path.empty())
            continue;
        folders_.push_back(path);
        if (folder == &places.home || !TWPath::isAtOrBelow(*folder, places.home))
            tops_.push_back(path);
    }
}

std::vector<TWLogSource> Search::sources()
{
    for (const auto& bases : allBases()) {
        for (const auto& place : TWLinuxLogPlaces)
            addPlace(bases, place);
    }
    removeDoubles();
    std::vector<TWLogSource> sources;
    for (auto& found : found_)
        sources.push_back(std::move(found.source));
    std::sort(sources.begin(), sources.end(), [](const auto& one, const auto& other) {
        return std::tie(one.name, one.path) < std::tie(other.name, other.path);
    });
    return sources;
}

// A Flatpak has folders of its own.
std::vector<Bases> Search::allBases() const
{
    std::vector<Bases> all{ { places_.home, places_.configHome, places_.dataHome, places_.stateHome, places_.cacheHome,
        "" } };
    const auto flatpaks = places_.home + "/.var/app";
    for (const auto& name : matches(flatpaks, "*")) {
        const auto own = TWPath::join(flatpaks, name);
        all.push_back({ own, own + "/config", own + "/data", own + "/.local/state", own + "/cache", "Flatpak" });
    }
    return all;
}

// Names of entries, sorted.
std::vector<std::string> Search::matches(const std::string& folder, const std::string& pattern) const
{
    int error = 0;
    const TWNamePattern matcher(pattern);
    std::vector<std::string> names;
    const auto opened = fileSystem_.openFolder(real(folder), error);
    if (!opened)
        return names;
    for (const auto& entry : opened->entries()) {
        if (matcher.matches(entry.name))
            names.emplace_back(entry.name);
    }
    std::sort(names.begin(), names.end());
    names.resize(std::min(names.size(), MostMatches));
    return names;
}

void Search::addPlace(const Bases& bases, const TWLinuxLogPlace& place)
{
    const std::string path = place.path;
    const auto star = path.find('*');
    const auto name = [&](const std::string& match) { return nameOf(place.program, match, bases.note); };
    if (star == std::string::npos) {
        add(place, name(""), TWPath::join(bases.of(place.base), path));
        return;
    }
    const auto begin = path.rfind('/', star) + 1; // 0 if there is none
    const auto end = std::min(path.find('/', star), path.size());
    const auto folder = TWPath::withoutTrailingSlashes(TWPath::join(bases.of(place.base), path.substr(0, begin)));
    for (const auto& match : matches(folder, path.substr(begin, end - begin)))
        add(place, name(match), TWPath::join(folder, match) + path.substr(end));
}

void Search::add(const TWLinuxLogPlace& place, std::string name, const std::string& path)
{
    const bool isFolder = place.kind == TWLinuxLogKind::Folder;
    const auto look = fileSystem_.look(path); // a link is not offered: what it leads to may be anything
    if (!look.isThere() || look.facts.kind != (isFolder ? TWFileKind::Folder : TWFileKind::File))
        return;
    Found found{ { std::move(name), path, isFolder, look.facts.identity }, real(path) };
    if (isAllowed(found))
        found_.push_back(std::move(found));
}

bool Search::isAllowed(const Found& found) const
{
    const auto& path = found.realPath;
    const auto parent = real(std::string(TWPath::parent(found.source.path)));
    const auto holdsParent = [&](const std::string& top) { return TWPath::isAtOrBelow(parent, top); };
    const auto isInside = [&](const std::string& folder) { return TWPath::isAtOrBelow(folder, path); };
    const bool isOfSystem = !systemLogs_.empty() && TWPath::isAtOrBelow(path, systemLogs_);
    const bool leavesSandbox = places_.sandboxed() && !TWPath::isAtOrBelow(path, places_.sandboxRoot);
    return !path.empty() && std::any_of(tops_.begin(), tops_.end(), holdsParent)
        && std::none_of(folders_.begin(), folders_.end(), isInside) && !isOfSystem && !leavesSandbox;
}

// Of two paths to the same place the one that was found first stays.
void Search::removeDoubles()
{
    std::stable_sort(found_.begin(), found_.end(),
        [](const Found& one, const Found& other) { return one.realPath + '/' < other.realPath + '/'; });
    std::unordered_set<TWFileIdentity> identities;
    std::string above; // the last one that stays
    std::erase_if(found_, [&](const Found& found) {
        const bool isInside = !above.empty() && TWPath::isAtOrBelow(found.realPath, above);
        if (isInside || !identities.insert(found.source.identity).second)
            return true;
        above = found.realPath;
        return false;
    });
}

}

std::vector<TWLogSource> TWLinuxLogSources::userSources(const TWPlaces& places) const
{
    return Search(fileSystem_, places).sources();
}
