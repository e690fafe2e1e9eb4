#pragma once

#include "cleaners/TWLogRoots.h"
#include "editors/TWLogsNode.h"

#include <functional>
#include <set>

// The logs tree: the saved choices, merged with the log folders as they are now. Touches no disk. Main thread.
//
// In each level the chosen nodes come first, in the order in which they were saved, and then everything else by name.
class TWLogsTree final {
public:
    using Level = TWLogsNode::Level;
    using Records = std::vector<TWLogsRecord>;

    // What the disk says about a chosen node that a fresh level does not hold.
    using Missing = std::function<TWLogsNode::State(const TWLogsNode&)>;

    // The path of the system's log folder, abbreviated.
    explicit TWLogsTree(std::string systemLogs);

    const Level& logsRoot() const { return *top_.children; }

    // Replaces the tree by the saved nodes and returns the old one.
    Level load(const Records&);

    // Puts other saved nodes over the nodes that are there, until those are read anew.
    void replaceChosen(const Records&);

    // Merges fresh nodes, the roots with everything below them, into the tree.
    void merge(Level fresh, const Missing&);

    // Reads a folder of the tree anew: drops the nodes that are not chosen and merges the fresh level, in which known
    // folders stand for the nodes as they are. Returns the nodes that are not needed any more.
    Level update(TWLogsNode& folder, Level fresh, const Missing&);

    // A click on the check box of the node: mixed counts as checked.
    void click(TWLogsNode&, std::int64_t value);

    // Checks whether anything above the node is checked, so that it cannot be changed itself.
    static bool hasActiveParent(const TWLogsNode&);

    // The chosen nodes, as they are saved.
    Records cleanedArrayFrom() const { return cleanedArrayFrom(logsRoot()); }

    // Puts the roots, or the user's logs, which are in many places, in their order after clicks.
    void sort(TWLogsNode& folder);

    // Space on disk of everything that is checked.
    std::uint64_t checkedBytes() const;

    // The node with that path; nullptr if there is none. The folder of the system's logs leads to its root.
    TWLogsNode* find(const std::string& itemPath);

    // The first chosen node with that path, wherever it is; nullptr if there is none.
    TWLogsNode* findChosen(const std::string& itemPath) { return findChosen(top_, itemPath); }

    // Finds the log or adds it, unchecked, with what is above it. The path lies in one of the roots and is absolute, or
    // one of the two tokens.
    TWLogsNode& add(const TWLogRoots&, const TWPlaces&, const std::string& path, bool isFolder);

    // The folders whose order a click has changed since they were read, by their paths; "" stands for the roots.
    const std::set<std::string>& unsorted() const { return unsorted_; }
    TWLogsNode& top() { return top_; } // of the roots

    // Merges fresh nodes into a level of the tree, whose nodes were saved, in place. Each saved node keeps its own
    // record; only what it lacks is added below it. Nodes that are not found are appended. A fresh level without
    // folder path is searched by whole paths; any other is sorted by name.
    static void mergeLogsFrom(Level fresh, Level& tree, const std::string& folderPath, const Missing&);

private:
    void updateParentStatus(TWLogsNode&);
    void setActiveStatus(std::int64_t, TWLogsNode&);
    void noteUnsorted(TWLogsNode& folder);
    static Records cleanedArrayFrom(const Level&);
    static TWLogsNode& addChild(TWLogsNode& folder, const std::string& itemPath, std::string item, bool isFolder);
    static TWLogsNode* findBelow(TWLogsNode& folder, const std::string& itemPath);
    static TWLogsNode* findChild(TWLogsNode& folder, const std::string& itemPath);
    static TWLogsNode* findChosen(TWLogsNode& folder, const std::string& itemPath);

    const std::string systemLogs_;
    TWLogsNode top_;
    std::set<std::string> unsorted_;
};
