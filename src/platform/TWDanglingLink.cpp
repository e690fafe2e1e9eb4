#include "platform/TWDanglingLink.h"

#include "support/TWPath.h"

bool TWIsBehindDanglingLink(const TWFileSystem& fileSystem, std::string path)
{
    for (; path != "/"; path = TWPath::parent(path)) {
        const auto look = fileSystem.look(path);
        if (look.isThere())
            return look.facts.kind == TWFileKind::Link && !fileSystem.look(path, TWLinkAtEnd::Follow).isThere();
    }
    return false;
}
