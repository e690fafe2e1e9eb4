#include "deletion/TWPreviewCheck.h"

bool TWPreviewCheck::isUnchanged(const TWFileFacts& seen, const TWFileFacts& now) const
{
    if (now.identity != seen.identity || now.kind != seen.kind)
        return false;
    if (now.kind == TWFileKind::Folder) {
        const auto own = folders_.find(now.identity);
        return now.changed == seen.changed
            || (own != folders_.end() && own->second.first == seen.changed && own->second.last == now.changed);
    }
    // Deleting another of its names changes a file's change time, but not its contents.
    const bool sameTime = seen.links > 1 ? now.modified == seen.modified : now.changed == seen.changed;
    return sameTime && now.size == seen.size;
}

void TWPreviewCheck::noteOwnChange(const TWFileFacts& before, const TWFileFacts& after)
{
    auto& own = folders_.try_emplace(before.identity, OwnChanges{ before.changed, before.changed }).first->second;
    if (own.last != before.changed)
        own.first = before.changed; // somebody else has changed it in between
    own.last = after.changed;
}

void TWPreviewCheck::noteDeleted(const Paths& folders)
{
    if (folders.empty())
        return;
    auto all = std::make_shared<Paths>(*deletedFolders_);
    all->insert(folders.begin(), folders.end());
    deletedFolders_ = std::move(all);
}
