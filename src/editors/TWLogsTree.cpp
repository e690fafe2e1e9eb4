#include "editors/TWLogsTree.h"

#include "support/TWPath.h"

#include <algorithm>
#include <unordered_map>

namespace {

using Level = TWLogsTree::Level;
using State = TWLogsNode::State;

constexpr auto NotFound = static_cast<std::size_t>(-1);

// Finds the fresh node with a path.
class FreshIndex final {
public:
    FreshIndex(const Level& fresh, const std::string& folderPath)
        : fresh_(fresh)
        , folderPath_(folderPath)
    {
        if (!folderPath.empty())
            return;
        for (std::size_t index = 0; index < fresh.size(); ++index)
            byPath_.emplace(fresh[index]->itemPath(), index);
    }

    std::size_t find(const std::string& path) const
    {
        if (folderPath_.empty()) {
            const auto found = byPath_.find(path);
            return found == byPath_.end() ? NotFound : found->second;
        }
        const auto name = TWPath::lastComponent(path);
        const auto found = std::lower_bound(fresh_.begin(), fresh_.end(), name,
            [](const auto& node, std::string_view wanted) { return node->item < wanted; });
        const bool same = found != fresh_.end() && (*found)->item == name && TWPath::join(folderPath_, name) == path;
        return same ? static_cast<std::size_t>(found - fresh_.begin()) : NotFound;
    }

private:
    const Level& fresh_;
    const std::string& folderPath_;
    std::unordered_map<std::string, std::size_t> byPath_;
};

void markMissing(TWLogsNode& node, const TWLogsTree::Missing& missing)
{
    node.state = missing(node);
    node.bytes = node.ownBytes = 0;
    node.kind = TWFileKind::Other;
    if (!node.children)
        return;
    for (const auto& child : *node.children)
        markMissing(*child, missing);
}

// Leaves only what would be saved of the folder.
void prune(TWLogsNode& folder, Level& dropped)
{
    if (!folder.children)
        return;
    Level chosen;
    for (auto& child : *folder.children) {
        prune(*child, dropped);
        (child->isChosen() ? chosen : dropped).push_back(std::move(child));
    }
    folder.setChildren(std::move(chosen));
}

// Unchecks everything below the folder and forgets what is not there, so that its level is like a fresh one. Passes
// over what is as it was read.
void unchoose(TWLogsNode& folder)
{
    folder.active = TWLogUnchecked;
    if (!folder.children || (!folder.hasChosen && folder.sortedFrom == 0))
        return;
    auto level = std::move(*folder.children);
    for (const auto& child : level)
        unchoose(*child);
    std::erase_if(
        level, [](const auto& node) { return node->state != State::There && node->root == TWLogsNode::Root::None; });
    std::sort(level.begin(), level.end(), TWLogsNode::comesBefore);
    folder.setChildren(std::move(level));
}

// The saved node gets what the disk says about it, and what it lacks below it.
void mergeNode(TWLogsNode& saved, std::unique_ptr<TWLogsNode> fresh, const TWLogsTree::Missing& missing)
{
    saved.state = State::There;
    saved.kind = fresh->kind;
    saved.modified = fresh->modified;
    saved.isUnread = fresh->isUnread;
    if (fresh->isKnown && saved.children)
        return;
    saved.bytes = fresh->bytes;
    saved.ownBytes = fresh->ownBytes;
    if (!saved.children)
        return;
    auto level = std::move(*saved.children);
    TWLogsTree::mergeLogsFrom(
        fresh->children ? std::move(*fresh->children) : Level(), level, saved.folderPath(), missing);
    saved.setChildren(std::move(level));
    saved.addUp();
}

}

TWLogsTree::TWLogsTree(std::string systemLogs)
    : systemLogs_(std::move(systemLogs))
{
    top_.setItemPath("");
    top_.setChildren({});
}

TWLogsTree::Level TWLogsTree::load(const Records& records)
{
    auto old = std::move(*top_.children);
    Level level;
    level.reserve(records.size());
    for (const auto& record : records)
        level.push_back(TWLogsNode::makeSaved(record, systemLogs_));
    top_.setChildren(std::move(level));
    unsorted_.clear();
    return old;
}

void TWLogsTree::replaceChosen(const Records& records)
{
    unchoose(top_);
    merge(load(records), [](const TWLogsNode&) { return State::Unknown; });
}

void TWLogsTree::merge(Level fresh, const Missing& missing)
{
    mergeLogsFrom(std::move(fresh), *top_.children, "", missing);
    TWLogsNode::adopt(*top_.children, &top_);
}

void TWLogsTree::mergeLogsFrom(Level fresh, Level& tree, const std::string& folderPath, const Missing& missing)
{
    const FreshIndex index(fresh, folderPath);
    std::vector<std::size_t> matches; // by node of the tree
    std::vector<std::size_t> uses(fresh.size()); // by fresh node: several saved nodes may have its path
    for (const auto& node : tree) {
        matches.push_back(index.find(node->itemPath()));
        if (matches.back() != NotFound)
            ++uses[matches.back()];
    }
    const auto unfound = uses;
    for (std::size_t place = 0; place < tree.size(); ++place) {
        const auto match = matches[place];
        if (match == NotFound)
            markMissing(*tree[place], missing);
        else
            mergeNode(*tree[place], --uses[match] > 0 ? fresh[match]->clone() : std::move(fresh[match]), missing);
    }
    for (std::size_t place = 0; place < fresh.size(); ++place) {
        if (unfound[place] == 0)
            tree.push_back(std::move(fresh[place]));
    }
}

TWLogsTree::Level TWLogsTree::update(TWLogsNode& folder, Level fresh, const Missing& missing)
{
    const auto path = folder.folderPath();
    const auto nameOf = [&](const TWLogsNode& node) { return path.empty() ? node.itemPath() : node.item; };
    std::unordered_map<std::string, std::size_t> known;
    for (std::size_t index = 0; index < fresh.size(); ++index) {
        if (fresh[index]->isKnown)
            known.emplace(nameOf(*fresh[index]), index);
    }
    Level chosen;
    Level dropped;
    for (auto& child : *folder.children) {
        const auto found = known.find(nameOf(*child));
        if (found == known.end() && child->isChosen())
            prune(*child, dropped);
        if (child->isChosen()) {
            chosen.push_back(std::move(child));
            continue;
        }
        if (found != known.end()) {
            child->modified = fresh[found->second]->modified;
            std::swap(child, fresh[found->second]);
        }
        dropped.push_back(std::move(child));
    }
    mergeLogsFrom(std::move(fresh), chosen, path, missing);
    folder.setChildren(std::move(chosen));
    const auto before = folder.bytes;
    folder.addUp();
    for (auto* above = folder.parent; above; above = above->parent)
        above->bytes += folder.bytes - before;
    unsorted_.erase(folder.parent ? folder.itemPath() : "");
    return dropped;
}

void TWLogsTree::sort(TWLogsNode& folder)
{
    auto level = std::move(*folder.children);
    std::erase_if(level, [](const auto& node) { return !node->isChosen() && node->state != State::There; });
    const auto rest
        = std::stable_partition(level.begin(), level.end(), [](const auto& node) { return node->isChosen(); });
    std::sort(rest, level.end(), TWLogsNode::comesBefore);
    folder.setChildren(std::move(level));
    unsorted_.erase(folder.parent ? folder.itemPath() : "");
}

void TWLogsTree::click(TWLogsNode& node, std::int64_t value)
{
    node.active = value == TWLogMixed ? TWLogChecked : value;
    noteUnsorted(*node.parent);
    updateParentStatus(node);
    top_.hasChosen = true;
    if (!node.children || !node.hasChosen)
        return;
    for (const auto& child : *node.children)
        setActiveStatus(TWLogUnchecked, *child);
    node.hasChosen = false;
    noteUnsorted(node);
}

// Only a click checks a folder: one in which everything is checked is mixed.
void TWLogsTree::updateParentStatus(TWLogsNode& node)
{
    for (auto* parent = node.parentItem(); parent; parent = parent->parentItem()) {
        const auto& level = *parent->children;
        const bool any = std::any_of(level.begin(), level.end(),
            [](const auto& child) { return child->active == TWLogChecked || child->active == TWLogMixed; });
        parent->active = any ? TWLogMixed : TWLogUnchecked;
        parent->hasChosen = parent->hasChosen || any;
        noteUnsorted(*parent->parent);
    }
}

// Passes over what is unchecked altogether, so that its cost does not grow with the size of the tree.
void TWLogsTree::setActiveStatus(std::int64_t active, TWLogsNode& node)
{
    node.active = active;
    if (!std::exchange(node.hasChosen, active != TWLogUnchecked) || !node.children)
        return;
    for (const auto& child : *node.children)
        setActiveStatus(active, *child);
    noteUnsorted(node);
}

void TWLogsTree::noteUnsorted(TWLogsNode& folder)
{
    unsorted_.insert(folder.parent ? folder.itemPath() : "");
}

bool TWLogsTree::hasActiveParent(const TWLogsNode& node)
{
    for (const auto* parent = node.parentItem(); parent; parent = parent->parentItem()) {
        if (parent->active == TWLogChecked)
            return true;
    }
    return false;
}

TWLogsTree::Records TWLogsTree::cleanedArrayFrom(const Level& level)
{
    Records records;
    for (const auto& node : level) {
        if (!node->isChosen())
            continue;
        records.push_back(node->record());
        if (node->children)
            records.back().children = cleanedArrayFrom(*node->children);
    }
    return records;
}

std::uint64_t TWLogsTree::checkedBytes() const
{
    std::uint64_t bytes = 0;
    std::vector<const Level*> levels{ &logsRoot() };
    while (!levels.empty()) {
        const auto* level = levels.back();
        levels.pop_back();
        for (const auto& node : *level) {
            if (node->active == TWLogChecked)
                bytes += node->bytes;
            else if (node->hasChosen && node->children)
                levels.push_back(node->children.get());
        }
    }
    return bytes;
}

TWLogsNode* TWLogsTree::find(const std::string& itemPath)
{
    for (const auto& root : logsRoot()) {
        if (root->itemPath() == itemPath || (!root->folderPath().empty() && root->folderPath() == itemPath))
            return root.get();
        if (auto* const found = findBelow(*root, itemPath))
            return found;
    }
    return findChosen(top_, itemPath);
}

// Goes down by the parts of the path.
TWLogsNode* TWLogsTree::findBelow(TWLogsNode& folder, const std::string& itemPath)
{
    for (auto* above = &folder; above->children;) {
        auto* const next = findChild(*above, itemPath);
        if (!next || next->itemPath() == itemPath)
            return next;
        above = next;
    }
    return nullptr;
}

// The child that has the path or is above it. Only those that are not sorted are looked at one by one.
TWLogsNode* TWLogsTree::findChild(TWLogsNode& folder, const std::string& itemPath)
{
    auto& level = *folder.children;
    const auto path = folder.folderPath();
    const auto rest = path.empty() ? level.end() : level.begin() + folder.sortedFrom;
    const auto found = std::find_if(level.begin(), rest, [&](const auto& node) {
        const auto nodePath = node->itemPath();
        return nodePath == itemPath || (node->children && TWPath::isAtOrBelow(itemPath, nodePath));
    });
    if (found != rest)
        return found->get();
    if (rest == level.end() || !TWPath::isAtOrBelow(itemPath, path) || itemPath == path)
        return nullptr;
    const auto below = std::string_view(itemPath).substr(path.size() + 1);
    const auto name = below.substr(0, below.find('/'));
    const auto named = std::lower_bound(
        rest, level.end(), name, [](const auto& node, std::string_view wanted) { return node->item < wanted; });
    return named != level.end() && (*named)->item == name ? named->get() : nullptr;
}

// A saved node may lie anywhere, whatever its path.
TWLogsNode* TWLogsTree::findChosen(TWLogsNode& folder, const std::string& itemPath)
{
    for (const auto& node : *folder.children) {
        if (node->isChosen() && node->itemPath() == itemPath)
            return node.get();
        auto* const found = node->children && node->hasChosen ? findChosen(*node, itemPath) : nullptr;
        if (found)
            return found;
    }
    return nullptr;
}

// The same child if it is there, whether it was saved as a file or as a folder.
TWLogsNode& TWLogsTree::addChild(TWLogsNode& folder, const std::string& itemPath, std::string item, bool isFolder)
{
    if (!folder.children)
        folder.setChildren({});
    auto& level = *folder.children;
    const auto found
        = std::find_if(level.begin(), level.end(), [&](const auto& node) { return node->itemPath() == itemPath; });
    if (found != level.end())
        return **found;
    auto& node = *level.emplace_back(std::make_unique<TWLogsNode>());
    node.item = std::move(item);
    node.setItemPath(itemPath);
    node.state = State::There;
    TWLogsNode::adopt(level, &folder);
    if (isFolder)
        node.setChildren({});
    return node;
}

TWLogsNode& TWLogsTree::add(const TWLogRoots& roots, const TWPlaces& places, const std::string& path, bool isFolder)
{
    const auto* const source = roots.sourceOf(path);
    const auto kind = source || path == TWAllUserLogs ? TWLogsNode::Root::User : TWLogsNode::Root::System;
    auto root = std::find_if(
        top_.children->begin(), top_.children->end(), [&](const auto& node) { return node->root == kind; });
    if (root == top_.children->end()) {
        top_.children->push_back(TWLogsNode::makeRoot(kind, kind == TWLogsNode::Root::User ? "" : systemLogs_));
        TWLogsNode::adopt(*top_.children, &top_);
        root = top_.children->end() - 1;
    }
    auto* node = root->get();
    std::string above = roots.systemLogs();
    if (source) {
        above = source->path;
        node = &addChild(*node, places.abbreviate(above),
            source->isFolder ? source->name : std::string(TWPath::lastComponent(above)), source->isFolder);
    }
    while (above != path && TWPath::isAtOrBelow(path, above)) {
        const auto rest = path.substr(above.size() + 1);
        const auto name = rest.substr(0, rest.find('/'));
        above = TWPath::join(above, name);
        node = &addChild(*node, places.abbreviate(above), name, isFolder || above != path);
    }
    return *node;
}
