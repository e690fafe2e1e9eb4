#pragma once

#include "cleaners/TWLogRoots.h"
#include "editors/TWLogsTree.h"
#include "platform/TWFolderWatch.h"

#include <optional>
#include <set>
#include <unordered_map>

// Reads log folders into fresh nodes, all of them unchecked and each level sorted by name. A symbolic link is a leaf.
// What is on another volume is not looked into. Any thread; belongs into the background.
class TWLogsScan final {
public:
    using Level = TWLogsNode::Level;

    // Deeper folders are shown but not looked into, because a property list could not hold what is chosen there.
    static constexpr std::size_t MaximumDepth = 200;

    // Each folder is watched from before it is read; nullptr if that is not wanted. The references must outlive the
    // object.
    TWLogsScan(const TWFileSystem&, const TWLogRoots&, const TWPlaces&, std::shared_ptr<TWWatchedFolders>,
        const TWCancellation&);

    // The two roots with everything in them.
    Level logs() const;

    // The entries of the folder with everything below them; the known ones are not looked into again. Sets error to
    // the errno if the folder could not be read.
    Level logsFromPath(const std::string& path, const std::set<std::string>& known, int& error) const;

    // What the disk says about chosen nodes, by their paths.
    using States = std::unordered_map<std::string, TWLogsNode::State>;
    States states(const std::vector<TWLogsRecord>&) const;

private:
    struct Found;
    class Visitor;
    class Assembly;

    std::optional<std::string> realPath(const std::string& path, int& error) const;
    TWLogsNode::State state(const std::string& itemPath) const;
    bool isBehindLink(const TWLogPlace&) const;
    void addStates(const std::vector<TWLogsRecord>&, States&) const;
    std::unique_ptr<TWLogsNode> sourceNode(const TWLogSource&) const;
    void readTrees(std::vector<TWLogsNode*> nodes, std::vector<std::string> paths, std::size_t depth) const;

    const TWFileSystem& fileSystem_;
    const TWLogRoots& roots_;
    const TWPlaces& places_;
    const std::shared_ptr<TWWatchedFolders> watched_;
    const TWCancellation& cancellation_;
};
