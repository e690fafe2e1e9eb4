#include "editors/TWLogsScan.h"

#include "platform/TWOnAllCores.h"
#include "platform/TWTreeWalk.h"
#include "support/TWPath.h"

#include <algorithm>
#include <cerrno>
#include <unordered_map>

namespace {

constexpr std::string_view DesktopServices = ".DS_Store"; // says how a file manager shows a folder

void setLook(TWLogsNode& node, const TWFileLook& look)
{
    if (look.presence == TWPresence::There)
        node.state = TWLogsNode::State::There;
    node.kind = look.facts.kind;
    node.bytes = look.facts.bytes;
    node.ownBytes = look.facts.kind == TWFileKind::Folder ? look.facts.bytes : 0;
    node.modified = look.facts.modified;
}

// How many folders further in a path is.
std::size_t depthBelow(const std::string& path, const std::string& folder)
{
    const auto below = std::string_view(path).substr(folder.size());
    return static_cast<std::size_t>(std::count(below.begin(), below.end(), '/'));
}

bool isListed(const TWFolderEntry& entry, const TWFileLook& look)
{
    return look.presence != TWPresence::Gone && (look.isFolder() || entry.name != DesktopServices);
}

std::unique_ptr<TWLogsNode> nodeOf(const TWFolderEntry& entry, const TWFileLook& look)
{
    auto node = std::make_unique<TWLogsNode>();
    node->item = entry.name;
    setLook(*node, look);
    if (look.isFolder())
        node->children = std::make_unique<TWLogsNode::Level>();
    return node;
}

// Puts the levels of all folders in order, then adds up their sizes, the innermost first.
void finish(const std::vector<TWLogsNode*>& folders)
{
    TWOnAllCores(folders.size(), [&](std::size_t begin, std::size_t end) {
        for (auto index = begin; index < end; ++index) {
            auto& level = *folders[index]->children;
            std::sort(level.begin(), level.end(), TWLogsNode::comesBefore);
        }
    });
    for (auto index = folders.size(); index-- > 0;) {
        TWLogsNode::adopt(*folders[index]->children, folders[index]);
        folders[index]->addUp();
    }
}

}

// What one thread of the walk has found.
struct TWLogsScan::Found {
    struct Part {
        std::string path; // of the folder
        std::size_t root = 0;
        Level entries;
    };
    std::vector<Part> parts;
    std::vector<std::string> unread; // folders that could not be entered
    std::size_t entries = 0;

    std::size_t size() const { return entries + unread.size(); }
};

class TWLogsScan::Visitor final : public TWTreeVisitor<Found> {
public:
    Visitor(const std::vector<std::string>& roots, std::size_t depth, TWWatchedFolders* watched)
        : roots_(roots)
        , depth_(depth)
        , watched_(watched)
    {
    }

    TWWalkStep visit(const TWWalkedFolder& folder, const TWFolderEntry& entry, Found& found) const override
    {
        const auto look = folder.folder().look(entry);
        if (!isListed(entry, look))
            return TWWalkStep::PassOver;
        if (found.parts.empty() || found.parts.back().path != folder.path())
            found.parts.push_back({ folder.path(), folder.root(), {} });
        auto& entries = found.parts.back().entries;
        entries.push_back(nodeOf(entry, look));
        ++found.entries;
        if (!look.isFolder())
            return TWWalkStep::PassOver;
        if (isDeepest(folder)) {
            entries.back()->isUnread = true;
            return TWWalkStep::PassOver;
        }
        if (watched_)
            watched_->add(folder.pathOf(entry));
        return TWWalkStep::Enter;
    }

    void notEntered(std::size_t, const std::string& path, int, Found& found) const override
    {
        found.unread.push_back(path);
    }

private:
    bool isDeepest(const TWWalkedFolder& folder) const
    {
        return depth_ + depthBelow(folder.path(), roots_[folder.root()]) >= MaximumDepth;
    }

    const std::vector<std::string>& roots_;
    const std::size_t depth_; // of the roots
    TWWatchedFolders* const watched_;
};

// Puts the parts of a walk together.
class TWLogsScan::Assembly final {
public:
    Assembly(const std::vector<TWLogsNode*>& nodes, const std::vector<std::string>& paths)
        : all_(nodes)
    {
        for (std::size_t index = 0; index < nodes.size(); ++index)
            folders_.emplace(paths[index], nodes[index]);
    }

    void take(Found found)
    {
        for (auto& part : found.parts) {
            auto& level = *folders_.at(part.path)->children;
            for (auto& entry : part.entries) {
                if (entry->children && !entry->isUnread) {
                    folders_.emplace(TWPath::join(part.path, entry->item), entry.get());
                    all_.push_back(entry.get());
                }
                level.push_back(std::move(entry));
            }
        }
        for (const auto& path : found.unread) {
            if (const auto folder = folders_.find(path); folder != folders_.end())
                folder->second->isUnread = true;
        }
    }

    // All folders, each after the one that it is in.
    const std::vector<TWLogsNode*>& folders() const { return all_; }

private:
    std::unordered_map<std::string, TWLogsNode*> folders_; // by path
    std::vector<TWLogsNode*> all_;
};

TWLogsScan::TWLogsScan(const TWFileSystem& fileSystem, const TWLogRoots& roots, const TWPlaces& places,
    std::shared_ptr<TWWatchedFolders> watched, const TWCancellation& cancellation)
    : fileSystem_(fileSystem)
    , roots_(roots)
    , places_(places)
    , watched_(std::move(watched))
    , cancellation_(cancellation)
{
}

TWLogsScan::Level TWLogsScan::logs() const
{
    Level level;
    level.push_back(TWLogsNode::makeRoot(TWLogsNode::Root::User, ""));
    level.push_back(TWLogsNode::makeRoot(TWLogsNode::Root::System, places_.abbreviate(roots_.systemLogs())));
    std::vector<TWLogsNode*> nodes;
    std::vector<std::string> paths;
    Level sources;
    for (const auto& source : roots_.sources()) {
        sources.push_back(sourceNode(source));
        nodes.push_back(sources.back().get());
        paths.push_back(source.path);
    }
    nodes.push_back(level[1].get());
    paths.push_back(roots_.systemLogs());
    if (watched_)
        watched_->setRoots(paths);
    readTrees(std::move(nodes), std::move(paths), 0);
    std::sort(sources.begin(), sources.end(), TWLogsNode::comesBefore);
    level[0]->setChildren(std::move(sources));
    level[0]->addUp();
    return level;
}

std::unique_ptr<TWLogsNode> TWLogsScan::sourceNode(const TWLogSource& source) const
{
    auto node = std::make_unique<TWLogsNode>();
    setLook(*node, fileSystem_.look(source.path, source.isFolder ? TWLinkAtEnd::Follow : TWLinkAtEnd::DoNotFollow));
    node->item = source.isFolder ? source.name : TWPath::lastComponent(source.path);
    node->setItemPath(places_.abbreviate(source.path));
    if (source.isFolder)
        node->children = std::make_unique<Level>();
    return node;
}

// Reads the folders among the nodes, each with everything below it. Only log folders, which have a depth of 0, may be
// symbolic links.
void TWLogsScan::readTrees(std::vector<TWLogsNode*> nodes, std::vector<std::string> paths, std::size_t depth) const
{
    for (std::size_t index = nodes.size(); index-- > 0;) {
        if (nodes[index]->children)
            continue;
        nodes.erase(nodes.begin() + static_cast<std::ptrdiff_t>(index));
        paths.erase(paths.begin() + static_cast<std::ptrdiff_t>(index));
    }
    if (watched_) {
        for (const auto& path : paths)
            watched_->add(path);
    }
    const Visitor visitor(paths, depth, watched_.get());
    Assembly assembly(nodes, paths);
    const auto linkAtEnd = depth == 0 ? TWLinkAtEnd::Follow : TWLinkAtEnd::DoNotFollow;
    const auto end = TWWalkTrees<Found>(
        fileSystem_, { paths, linkAtEnd }, visitor, [&](Found found) { assembly.take(std::move(found)); },
        cancellation_);
    for (auto* node : nodes)
        node->isUnread = node->isUnread || end == TWWalkEnd::Failed;
    finish(assembly.folders());
}

// Links below a log folder are not followed.
std::optional<std::string> TWLogsScan::realPath(const std::string& path, int& error) const
{
    if (roots_.isRoot(path))
        return fileSystem_.realPath(path, TWLinkAtEnd::Follow, &error);
    const auto place = roots_.find(fileSystem_, path, error);
    return place.objection ? std::nullopt : std::optional(TWPath::join(place.realFolder, place.name));
}

TWLogsScan::Level TWLogsScan::logsFromPath(
    const std::string& path, const std::set<std::string>& known, int& error) const
{
    const auto real = realPath(path, error);
    if (watched_) {
        // What was below it may have moved, with its watches.
        if (known.empty())
            watched_->remove(path);
        watched_->add(path);
    }
    auto folder = real && error == 0 ? fileSystem_.openFolder(*real, error, &cancellation_) : nullptr;
    const auto top = roots_.folderOf(path);
    const auto device = fileSystem_.look(top, TWLinkAtEnd::Follow).facts.identity.device;
    if (folder && folder->identity().device != device) {
        error = EXDEV;
        folder.reset();
    }
    const auto depth = depthBelow(path, top);
    Level level;
    auto lost = known;
    std::vector<TWLogsNode*> unknown;
    std::vector<std::string> paths;
    for (const auto& entry : folder ? folder->entries() : std::vector<TWFolderEntry>()) {
        if (cancellation_.cancelled())
            break;
        const auto look = folder->look(entry);
        if (!isListed(entry, look))
            continue;
        level.push_back(nodeOf(entry, look));
        auto& node = *level.back();
        if (node.children)
            lost.erase(node.item);
        node.isKnown = node.children && known.contains(node.item);
        node.isUnread = node.children && (depth >= MaximumDepth || look.facts.identity.device != device);
        if (node.children && !node.isKnown && !node.isUnread) {
            unknown.push_back(&node);
            paths.push_back(TWPath::join(path, node.item));
            if (watched_)
                watched_->remove(paths.back());
        }
    }
    // One that was moved elsewhere would still be watched.
    for (const auto& name : watched_&& folder ? lost : std::set<std::string>())
        watched_->remove(TWPath::join(path, name));
    readTrees(std::move(unknown), std::move(paths), depth + 1);
    std::sort(level.begin(), level.end(), TWLogsNode::comesBefore);
    return level;
}

TWLogsScan::States TWLogsScan::states(const std::vector<TWLogsRecord>& records) const
{
    States states;
    addStates(records, states);
    return states;
}

TWLogsNode::State TWLogsScan::state(const std::string& itemPath) const
{
    int error = 0;
    const auto place = roots_.find(fileSystem_, itemPath, error);
    const auto look = fileSystem_.look(place.path);
    if (place.objection == TWLogPlace::Ambiguous)
        return TWLogsNode::State::Outside;
    // A source that has vanished is none any more, until it comes back.
    if (look.presence == TWPresence::Gone)
        return TWLogsNode::State::Vanished;
    if (place.objection || (error == 0 && isBehindLink(place)))
        return TWLogsNode::State::Outside;
    return look.isThere() ? TWLogsNode::State::There : TWLogsNode::State::Unknown;
}

// A link below a log folder is not followed.
bool TWLogsScan::isBehindLink(const TWLogPlace& place) const
{
    int error = 0;
    return !fileSystem_.holdFolder(place.realFolder, error) && (error == ELOOP || error == ENOTDIR);
}

void TWLogsScan::addStates(const std::vector<TWLogsRecord>& records, States& states) const
{
    for (const auto& record : records) {
        states[record.itemPath] = state(record.itemPath);
        if (record.children)
            addStates(*record.children, states);
    }
}
