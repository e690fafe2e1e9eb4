#pragma once

#include "platform/TWFileSystem.h"
#include "support/TWKeywordMatcher.h"

#include <memory>
#include <string>
#include <vector>

// The search below a folder as the files cleaner makes it, until the bench can call the cleaner itself: matched entries
// are taken whole and not entered, the contents of packages are skipped.
inline std::vector<std::string> itemsContainingKeywords(
    const TWFileSystem& files, const TWKeywordMatcher& keywords, const std::string& top)
{
    struct Level {
        std::unique_ptr<TWOpenFolder> folder;
        std::size_t next;
        std::size_t pathLength;
    };
    std::vector<std::string> found;
    std::vector<Level> levels;
    std::string path = top;
    const auto enter = [&](std::unique_ptr<TWOpenFolder> folder) {
        if (folder && !folder->isPackage())
            levels.push_back({ std::move(folder), 0, path.size() });
    };
    enter(files.openFolder(path, TWLinkAtEnd::Follow));
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.folder->entries().size()) {
            levels.pop_back();
            continue;
        }
        const TWFolderEntry& entry = level.folder->entries()[level.next++];
        const bool matched = keywords.matches(entry.name);
        if (!matched && entry.kind != TWFileKind::Folder)
            continue;
        path.resize(level.pathLength);
        path.append("/").append(entry.name);
        if (matched)
            found.push_back(path);
        else
            enter(level.folder->openFolder(entry));
    }
    return found;
}
