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
// goes from folder to folder by open descriptors and never through a link or into another file system. Works without
// recursion and with few descriptors, however deep the tree is.
//
// A file keeps its name until it is overwritten, and then loses it in a single system call. Whenever the process is
// killed, each file is therefore either still there under its old name, whole or partly overwritten, or overwritten
// completely and gone. Nothing else can be left behind, and the parent sees a signal instead of an exit status of 0.
//
// Kept on purpose: names are not disguised by renaming before they are removed. A process that is killed between the
// two steps would leave a file behind that nobody can recognize, and nothing is gained: a rename does not overwrite the
// old name on the disk, it removes it just as unlinking does.
class TWTreeEraser final {
public:
    TWTreeEraser(TWOverwriter&, TWReport&, const TWHeldSignals&);

    // Takes the name of an entry, without slashes. Call it once. Returns true if nothing is left of the entry.
    // Otherwise failures were reported, or a signal is pending and the work was stopped.
    bool erase(const std::string& name);

private:
    // A folder on the way from the working directory to where the work is.
    struct Level {
        std::string name;
        TWEntryFacts facts;
        TWDescriptor folder; // closed while the work is many levels further down
        std::vector<std::string> pending; // names not yet looked at
        int refusal = 0; // the errno with which nothing can be removed from here
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
    // Names that were removed from files with several names, by file. A file whose last name is in the tree, too, is
    // overwritten then and taken out again.
    std::multimap<TWEntryFacts::Identity, std::string> linkedElsewhere_;
    bool failed_ = false;
};
