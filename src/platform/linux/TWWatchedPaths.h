#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

// Which watch is on which path. A watch stays with its folder when that is moved, so each has one path: the one it was
// given last. Touches no file.
class TWWatchedPaths final {
public:
    static constexpr int None = -1;

    // Returns the watch that was on this path before and has no path now, or None.
    int assign(const std::string& path, int watch);

    // nullptr if the watch has no path.
    const std::string* pathOf(int watch) const;

    void forget(int watch);

    // Returns the watches that were on this path or below it and have no path now.
    std::vector<int> takeBelow(const std::string& path);

private:
    using Watches = std::map<std::string, int>; // sorted, so that a tree is a few ranges

    Watches watches_;
    std::unordered_map<int, Watches::const_iterator> places_;
};
