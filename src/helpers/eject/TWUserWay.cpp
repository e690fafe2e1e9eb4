#include "TWUserWay.h"

#include "TWBoundedChild.h"

#include <unistd.h>

bool TWUserWay::applies(const TWLinuxMount&)
{
    return geteuid() != 0;
}

std::string TWUserWay::unmount(const TWJudgedMount& judged, TWUnmountKind kind, TWDeadline::Duration limit)
{
    std::vector<std::string> arguments{ "--", judged.mount.point };
    if (kind == TWUnmountKind::Lazy)
        arguments.insert(arguments.begin(), "-l");
    return TWRunTool(name(), arguments, limit);
}
