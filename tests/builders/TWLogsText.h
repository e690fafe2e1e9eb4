#pragma once

#include "editors/TWLogsTree.h"

#include <sstream>

// A logs tree as text: one line for each node, such as "[x] name/" for a checked folder, two blanks further in for each
// level. Below "User Logs" paths begin with "~", below "System Logs" with "/var/log"; "name=path" has a path of its
// own.
namespace TWLogsText {

using Records = std::vector<TWLogsRecord>;

inline void add(Records& level, std::size_t depth, const TWLogsRecord& record)
{
    if (depth == 0)
        level.push_back(record);
    else
        add(*level.back().children, depth - 1, record);
}

inline Records records(const std::string& text)
{
    Records top;
    std::vector<std::string> paths; // of the folders above
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const auto depth = line.find('[') / 2;
        const auto state = line[depth * 2 + 1];
        auto name = line.substr(depth * 2 + 4);
        TWLogsRecord record;
        if (name.ends_with('/')) {
            record.children.emplace();
            name.pop_back();
        }
        paths.resize(depth);
        const auto equals = name.find('=');
        record.item = name.substr(0, equals);
        record.itemPath = equals == name.npos ? (depth == 0 ? "" : paths.back() + "/") + name : name.substr(equals + 1);
        record.active = state == 'x' ? 1 : state == '-' ? -1 : state == ' ' ? 0 : state - '0';
        paths.push_back(record.itemPath);
        if (name == "User Logs" || name == "System Logs") {
            record.itemPath = name == "User Logs" ? TWAllUserLogs : TWAllSystemLogs;
            paths.back() = name == "User Logs" ? "~" : "/var/log";
        }
        add(top, depth, record);
    }
    return top;
}

inline void add(const TWLogsTree::Level& level, std::size_t depth, std::string& text)
{
    for (const auto& node : level) {
        const std::string state = node->active == 1 ? "x" : node->active == -1 ? "-" : std::to_string(node->active);
        text += std::string(depth * 2, ' ') + "[" + (state == "0" ? " " : state) + "] " + node->item
            + (node->children ? "/" : "");
        text += node->state == TWLogsNode::State::Vanished ? " gone"
            : node->state == TWLogsNode::State::Outside    ? " outside"
                                                           : "";
        text += "\n";
        if (node->children)
            add(*node->children, depth + 1, text);
    }
}

inline std::string text(const TWLogsTree& tree)
{
    std::string text;
    add(tree.logsRoot(), 0, text);
    return text;
}

// The nodes as a scan finds them: names sorted, nothing chosen.
inline TWLogsTree::Level fresh(const std::string& text)
{
    TWLogsTree::Level level;
    const auto found = [](auto& self, TWLogsNode& node) -> void {
        node.state = TWLogsNode::State::There;
        node.kind = node.children ? TWFileKind::Folder : TWFileKind::File;
        node.bytes = node.children ? 0 : 1;
        if (!node.children)
            return;
        for (const auto& child : *node.children)
            self(self, *child);
        node.addUp();
    };
    for (const auto& record : records(text)) {
        level.push_back(TWLogsNode::makeSaved(record, "/var/log"));
        found(found, *level.back());
    }
    return level;
}

}
