#pragma once

#include "platform/TWFileSystem.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>

// Tells during a run whether things are still as its preview saw them. A deletion changes the parent folder, and that
// folder may be an item of the same run, so the check remembers the run's own changes. It also knows which folders the
// run has deleted, because one cleaner may have planned what went with the folder of another. Main thread.
class TWPreviewCheck final {
public:
    // False if it is another file or folder now, or has been changed by anybody but this run.
    bool isUnchanged(const TWFileFacts& seen, const TWFileFacts& now) const;

    // The facts of a folder directly before and after a deletion in it. What another program changes in the folder
    // during the deletion cannot be told from the deletion.
    void noteOwnChange(const TWFileFacts& before, const TWFileFacts& after);

    using Paths = std::unordered_set<std::string>;

    // Real paths of folders that the run has deleted and that are certainly gone, with everything in them.
    void noteDeleted(const Paths&);
    const std::shared_ptr<const Paths>& deletedFolders() const { return deletedFolders_; }

private:
    // Between these two times of its last change only the run has changed a folder.
    struct OwnChanges {
        std::int64_t first = 0;
        std::int64_t last = 0;
    };

    std::unordered_map<TWFileIdentity, OwnChanges> folders_;
    std::shared_ptr<const Paths> deletedFolders_ = std::make_shared<const Paths>(); // replaced, never changed
};
