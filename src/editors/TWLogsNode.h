#pragma once

#include "cleaners/TWLogsRecord.h"
#include "platform/TWFileSystem.h"

// One row of the logs tree: a log, a folder of logs, or one of the two roots. Kept small, because there may be hundreds
// of thousands. Main thread, or the thread that builds a new tree.
class TWLogsNode final {
public:
    using Level = std::vector<std::unique_ptr<TWLogsNode>>;

    enum class Root : std::uint8_t { None, User, System };

    // What the disk says about it.
    enum class State : std::uint8_t {
        Unknown, // nobody has looked yet, or it could not be looked at
        There,
        Vanished, // it was chosen before it disappeared
        Outside, // it lies in no log folder, so it is never deleted
    };

    TWLogsNode() = default;
    TWLogsNode(const TWLogsNode&) = delete;
    TWLogsNode& operator=(const TWLogsNode&) = delete;

    // A root. The folder is the one in which its logs are, abbreviated; "" for the user's, which are in many places.
    static std::unique_ptr<TWLogsNode> makeRoot(Root, std::string folder);

    // A chosen node as it was saved, with everything below it.
    static std::unique_ptr<TWLogsNode> makeSaved(
        const TWLogsRecord&, const std::string& systemLogs, bool mayBeRoot = true);
    TWLogsRecord record() const; // without what is below it

    // What the outline shows above it; nullptr for a root.
    TWLogsNode* parentItem() const { return parent && parent->parent ? parent : nullptr; }

    // The path in the place of the one that follows from the parent.
    void setItemPath(std::string path);
    std::string itemPath() const;

    // What the paths of its children begin with, up to the last slash.
    std::string folderPath() const;

    bool isFolder() const { return children != nullptr; }

    // Tells the nodes of the level their places below the parent.
    static void adopt(const Level&, TWLogsNode* parent);

    // Puts the level below this node.
    void setChildren(Level);

    // A copy with everything below it.
    std::unique_ptr<TWLogsNode> clone() const;

    // The order of nodes that are not chosen: the user's root first, else by name.
    static bool comesBefore(const std::unique_ptr<TWLogsNode>&, const std::unique_ptr<TWLogsNode>&);

    bool isChosen() const { return active != TWLogUnchecked; }

    // Adds up its own size and the children's.
    void addUp();

    std::string item; // the name shown
    TWLogsNode* parent = nullptr; // of a root the tree itself
    std::unique_ptr<Level> children; // of a folder and of a root
    std::uint64_t bytes = 0; // space on disk, of a folder with everything below it
    std::uint64_t ownBytes = 0; // of these, those of the folder itself
    std::int64_t modified = 0; // in nanoseconds since 1970 UTC
    std::int64_t active = TWLogUnchecked;
    std::unique_ptr<TWKeptEntries> kept; // what its record holds that is not understood
    std::uint32_t row = 0; // in its level
    std::uint32_t sortedFrom = 0; // the row from which the children are sorted by name, whatever clicks do
    TWFileKind kind = TWFileKind::Other; // if it is there
    State state = State::Unknown;
    Root root = Root::None;
    bool isUnread = false; // a folder that could not be read or is not looked into
    bool isKnown = false; // in a fresh level: a folder whose contents are as they were, not looked into again
    bool isShown = true; // the filter lets it or something below it through
    bool hasChosen = false; // something below it may be checked or mixed

private:
    std::unique_ptr<std::string> path_; // nullptr if it follows from the parent; the folder's of a root
};
