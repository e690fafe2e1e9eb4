#include "editors/TWLogsNode.h"

#include "support/TWPath.h"

#include <tuple>

std::unique_ptr<TWLogsNode> TWLogsNode::makeRoot(Root root, std::string folder)
{
    auto node = std::make_unique<TWLogsNode>();
    node->root = root;
    node->item = root == Root::User ? "User Logs" : "System Logs";
    node->state = State::There;
    node->path_ = std::make_unique<std::string>(std::move(folder));
    node->children = std::make_unique<Level>();
    return node;
}

// Recursive; a property list is not nested deeper than its reader allows.
std::unique_ptr<TWLogsNode> TWLogsNode::makeSaved(
    const TWLogsRecord& record, const std::string& systemLogs, bool mayBeRoot)
{
    auto node = std::make_unique<TWLogsNode>();
    if (record.itemPath == TWAllUserLogs && mayBeRoot)
        node = makeRoot(Root::User, "");
    else if (record.itemPath == TWAllSystemLogs && mayBeRoot)
        node = makeRoot(Root::System, systemLogs);
    else
        node->setItemPath(record.itemPath);
    node->item = record.item;
    node->active = record.active;
    if (record.kept != TWKeptEntries())
        node->kept = std::make_unique<TWKeptEntries>(record.kept);
    node->children.reset();
    if (!record.children)
        return node;
    Level level;
    level.reserve(record.children->size());
    for (const auto& child : *record.children)
        level.push_back(makeSaved(child, systemLogs, false));
    node->setChildren(std::move(level));
    return node;
}

TWLogsRecord TWLogsNode::record() const
{
    TWLogsRecord record{ item, itemPath(), active, std::nullopt, kept ? *kept : TWKeptEntries() };
    if (children)
        record.children.emplace();
    return record;
}

void TWLogsNode::setItemPath(std::string path)
{
    path_ = std::make_unique<std::string>(std::move(path));
}

std::string TWLogsNode::itemPath() const
{
    if (root != Root::None)
        return std::string(root == Root::User ? TWAllUserLogs : TWAllSystemLogs);
    if (path_ || !parent)
        return path_ ? *path_ : item;
    return TWPath::join(parent->folderPath(), item);
}

std::string TWLogsNode::folderPath() const
{
    return root == Root::None ? itemPath() : *path_;
}

bool TWLogsNode::comesBefore(const std::unique_ptr<TWLogsNode>& one, const std::unique_ptr<TWLogsNode>& other)
{
    if (one->root != other->root || one->item != other->item)
        return std::tie(one->root, one->item) < std::tie(other->root, other->item);
    return one->path_ && other->path_ && *one->path_ < *other->path_;
}

void TWLogsNode::adopt(const Level& level, TWLogsNode* parent)
{
    parent->hasChosen = false;
    parent->sortedFrom = 0;
    for (std::uint32_t index = 0; index < level.size(); ++index) {
        auto& child = *level[index];
        if (child.isChosen())
            parent->sortedFrom = index + 1;
        else if (index > parent->sortedFrom && comesBefore(level[index], level[index - 1]))
            parent->sortedFrom = index;
        child.parent = parent;
        child.row = index;
        parent->hasChosen = parent->hasChosen || child.isChosen() || child.hasChosen;
    }
}

void TWLogsNode::setChildren(Level level)
{
    children = std::make_unique<Level>(std::move(level));
    adopt(*children, this);
}

// Recursive; the tree is not deeper than a scan goes.
std::unique_ptr<TWLogsNode> TWLogsNode::clone() const
{
    auto copy = std::make_unique<TWLogsNode>();
    copy->item = item;
    copy->bytes = bytes;
    copy->ownBytes = ownBytes;
    copy->modified = modified;
    copy->active = active;
    copy->kept = kept ? std::make_unique<TWKeptEntries>(*kept) : nullptr;
    copy->kind = kind;
    copy->state = state;
    copy->root = root;
    copy->isUnread = isUnread;
    copy->path_ = path_ ? std::make_unique<std::string>(*path_) : nullptr;
    if (!children)
        return copy;
    Level level;
    for (const auto& child : *children)
        level.push_back(child->clone());
    copy->setChildren(std::move(level));
    return copy;
}

void TWLogsNode::addUp()
{
    if (!children)
        return;
    bytes = ownBytes;
    for (const auto& child : *children)
        bytes += child->bytes;
}
