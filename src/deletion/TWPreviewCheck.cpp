#include "deletion/TWPreviewCheck.h"

const TWFileFacts& TWPreviewCheck::expected(const TWFileFacts& seen) const
{
    const auto changed = changed_.find(seen.identity);
    return changed == changed_.end() ? seen : changed->second;
}

bool TWPreviewCheck::isUnchanged(const TWFileFacts& asSeen, const TWFileFacts& now) const
{
    const auto& seen = expected(asSeen);
    if (now.identity != seen.identity || now.kind != seen.kind)
        return false;
    if (now.kind == TWFileKind::Folder)
        return true;
    // Deleting another of its names changes a file's change time, but not its contents.
    const bool lostName = now.links < seen.links && mayHaveDeletedNameOf(now.identity);
    const bool sameTime = now.changed == seen.changed || (lostName && now.modified == seen.modified);
    return sameTime && now.size == seen.size;
}

bool TWPreviewCheck::mayHaveDeletedNameOf(const TWFileIdentity& file) const
{
    return deletedSharedFolder_ || deletedNames_.contains(file);
}

bool TWPreviewCheck::isFolderUnchanged(const std::string& realPath, const TWTreePrint& now) const
{
    const auto found = expected_.find(realPath);
    if (found == expected_.end())
        return false;
    const bool lostNames = deletedSharedFolder_ || !deletedNames_.empty();
    return now.exact == found->second.exact || (lostNames && now.contents == found->second.contents);
}

void TWPreviewCheck::noteOwnDeletion(const std::string& realPath, const TWFileFacts& seen)
{
    TWTreePrint print;
    if (const auto found = expected_.find(realPath); seen.kind == TWFileKind::Folder && found != expected_.end()) {
        print = found->second;
        deletedSharedFolder_ = deletedSharedFolder_ || print.severalNames;
    } else {
        print.add(seen);
        if (print.severalNames)
            deletedNames_.insert(seen.identity);
    }
    changeAround(realPath, print, TWTreePrint());
}

void TWPreviewCheck::noteOwnChange(const std::string& realPath, const TWFileFacts& seen, const TWFileFacts& now)
{
    TWTreePrint before;
    TWTreePrint after;
    before.add(expected(seen));
    after.add(now);
    changeAround(realPath, before, after);
    changed_[seen.identity] = now;
}

void TWPreviewCheck::changeAround(const std::string& realPath, const TWTreePrint& before, const TWTreePrint& after)
{
    if (expected_.empty())
        return;
    for (auto end = realPath.rfind('/'); end != 0 && end != std::string::npos; end = realPath.rfind('/', end - 1)) {
        if (const auto around = expected_.find(realPath.substr(0, end)); around != expected_.end()) {
            around->second -= before;
            around->second += after;
        }
    }
}

void TWPreviewCheck::noteDeleted(const Paths& folders)
{
    if (folders.empty())
        return;
    auto all = std::make_shared<Paths>(*deletedFolders_);
    all->insert(folders.begin(), folders.end());
    deletedFolders_ = std::move(all);
}
