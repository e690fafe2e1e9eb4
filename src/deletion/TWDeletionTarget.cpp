#include "deletion/TWDeletionTarget.h"

TWDeletionTarget TWDeletionTarget::make(TWPlannedFolder folder, std::string name)
{
    struct Owner {
        TWPlannedFolder folder;
        std::string name;
    };
    const auto owner = std::make_shared<const Owner>(Owner{ std::move(folder), std::move(name) });
    return { { owner, &owner->folder }, owner->name };
}

std::string TWDeletionTarget::join(const std::string& folderPath) const
{
    std::string path = folderPath;
    if (!path.empty() && path != "/")
        path += '/';
    return path.append(name);
}
