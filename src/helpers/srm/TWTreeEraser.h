#pragma once

#include "TWEntryFacts.h"
#include "TWOverwriter.h"
#include "TWRandom.h"
#include "platform/posix/TWDescriptor.h"

#include <string>
#include <vector>

// Overwrites and removes one path with everything below it, children before their folder. It goes from folder to folder
// by open descriptors and never through a link or into another file system. What cannot be overwritten keeps its name;
// so does every folder above it. Works without recursion and with few descriptors, however deep the tree.
class TWTreeEraser final {
public:
    TWTreeEraser(TWOverwriter&, TWRandom&);

    // An absolute path without trailing slashes. True when nothing is left at the path.
    bool erase(const std::string& path);

private:
    // A folder on the way from the given path's parent to where the work is.
    struct Level {
        std::string name;
        TWEntryFacts facts;
        TWDescriptor folder; // closed while the work is many levels further down
        std::vector<std::string> pending; // names not yet looked at
        int notWritable = 0; // the errno with which nothing could be removed from here
        bool removedSome = false;
        bool keptSome = false;
    };

    bool openStart(const std::string& path);
    void eraseEntry(const std::string& name);
    void eraseFile(const std::string& name, const TWEntryFacts&);
    void enterFolder(const std::string& name, const TWEntryFacts&);
    void pushLevel(Level);
    void leaveFolder();
    bool reopenFolder(Level&, const Level& child);

    TWDescriptor openForWriting(const std::string& name, const TWEntryFacts&, int& error);
    TWDescriptor openWriteProtected(const std::string& name, const TWEntryFacts&, int& error);
    void removeDisguised(const std::string& name, const TWEntryFacts&);
    std::string renamed(const std::string& name);
    bool removeName(const std::string& name);

    int here() const { return levels_.back().folder.get(); }
    void keep(const std::string& name, const char* reason);
    void keep(const std::string& name, int error);
    void say(const std::string& name, const char* text) const;

    TWOverwriter& overwriter_;
    TWRandom& random_;
    std::vector<Level> levels_;
    bool keptSome_ = false;
};
