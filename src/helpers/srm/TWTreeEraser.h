#pragma once

#include "TWEntryFacts.h"
#include "TWHeldSignals.h"
#include "TWOverwriter.h"
#include "TWReport.h"
#include "platform/posix/TWDescriptor.h"

#include <map>
#include <string>
#include <vector>

// Overwrites and removes one entry of the working directory with everything below it, children before their folder. It
// moves from folder to folder by open descriptors and never follows a symbolic link or enters another file system. It
// works without recursion and with few descriptors, however deep the tree is.
//
// A file keeps its name until it is overwritten and is then removed with a single system call. So if the process is
// killed, each file either still has its old name, unchanged or partly overwritten, or is completely overwritten and
// gone. Nothing else can be left behind, and the parent sees a signal instead of an exit status of 0.
//
// Kept on purpose: files are not renamed before they are removed. A process that is killed between the two steps would
// leave a file that nobody recognises, and nothing would be gained: a rename does not overwrite the old name on the
// disk but removes it just as unlink() does.
class TWTreeEraser final {
public:
    TWTreeEraser(TWOverwriter&, TWReport&, const TWHeldSignals&);

    // Erases the entry with that name, which has no slashes. Call it once. Returns true if nothing is left of the
    // entry; otherwise it has reported failures or stopped because a signal is pending.
    bool erase(const std::string& name);

private:
    // A folder on the way from the working directory to the current one.
    struct Level {
        std::string name;
        TWEntryFacts facts;
        TWDescriptor folder; // closed while the work is many levels below
        std::vector<std::string> pending; // names not handled yet
        int refusal = 0; // the errno why nothing can be removed from this folder, or 0
        bool removedSome = false;
        bool keptSome = false;
    };

    bool eraseAll(const std::string& name);
    bool openWorkingDirectory(const std::string& name);
    void eraseEntry(const std::string& name);
    void eraseFile(const std::string& name, TWEntryFacts);
    void enterFolder(const std::string& name, const TWEntryFacts&);
    void pushLevel(Level);
    void leaveFolder();
    bool reopenFolder(Level&, const Level& child);
    bool hasMovedAway(const Level&) const;

    int removalRefusal(const std::string& name) const;
    TWDescriptor openForWriting(const std::string& name, const TWEntryFacts&, int& error);
    TWDescriptor openWriteProtected(const std::string& name, const TWEntryFacts&, int& error);
    void removeSame(const std::string& name, const TWEntryFacts&);
    bool removeName(const std::string& name, int flags);

    int here() const { return levels_.back().folder.get(); }
    void keep(const std::string& name, const char* reason);
    void keep(const std::string& name, int error);
    void fail(const std::string& name, const char* reason);
    std::string pathOf(const std::string& name) const;

    TWOverwriter& overwriter_;
    TWReport& report_;
    const TWHeldSignals& signals_;
    std::vector<Level> levels_;
    // Names of files with several hard links that were removed without overwriting, by file. A file whose last name is
    // also in the tree is overwritten at that name and removed from this map.
    std::multimap<TWEntryFacts::Identity, std::string> linkedElsewhere_;
    bool failed_ = false;
};
