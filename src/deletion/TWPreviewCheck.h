#pragma once

#include "platform/TWTreeSizes.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

// Tells during a run whether things are still as its preview saw them. Knows what the run itself has deleted: that
// changes the folders around it, which may be items of the same run, and the other names of a file. It also knows
// which folders the run has deleted, because one cleaner may have planned what went with the folder of another. Main
// thread.
class TWPreviewCheck final {
public:
    // What the preview found in a folder that the run is to delete. The first call for a path counts.
    void expectFolder(const std::string& realPath, const TWTreePrint& print) { expected_.try_emplace(realPath, print); }

    // False if it is another file or folder now, or a file that anybody but this run has changed. Of a folder, only
    // isFolderUnchanged() tells whether something in it has changed.
    bool isUnchanged(const TWFileFacts& seen, const TWFileFacts& now) const;

    // Whether the folder holds what the preview found in it, less what this run has deleted.
    bool isFolderUnchanged(const std::string& realPath, const TWTreePrint& now) const;

    // The run has deleted what was found unchanged at the path.
    void noteOwnDeletion(const std::string& realPath, const TWFileFacts& seen);

    // The run has replaced the file at the path by one that has lost entries, or has changed it.
    void noteOwnChange(const std::string& realPath, const TWFileFacts& seen, const TWFileFacts& now);

    // What the file that the preview has seen is expected to be now.
    const TWFileFacts& expected(const TWFileFacts& seen) const;

    using Paths = std::unordered_set<std::string>;

    // Real paths of folders that the run has deleted and that are certainly gone, with everything in them.
    void noteDeleted(const Paths&);
    const std::shared_ptr<const Paths>& deletedFolders() const { return deletedFolders_; }

private:
    bool mayHaveDeletedNameOf(const TWFileIdentity& file) const;
    void changeAround(const std::string& realPath, const TWTreePrint& before, const TWTreePrint& after);

    std::unordered_map<std::string, TWTreePrint> expected_; // by real path, less what the run has deleted
    std::unordered_map<TWFileIdentity, TWFileFacts> changed_; // by what the preview has seen
    std::unordered_set<TWFileIdentity> deletedNames_; // files of which the run has deleted a name, but not the last one
    bool deletedSharedFolder_ = false; // it has deleted a folder with such names in it
    std::shared_ptr<const Paths> deletedFolders_ = std::make_shared<const Paths>(); // replaced, never changed
};
