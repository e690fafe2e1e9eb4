#include "TWFuseWay.h"

#include "TWBoundedChild.h"
#include "support/TWText.h"

#include <algorithm>
#include <unistd.h>

bool TWFuseWay::applies(const TWLinuxMount& mount)
{
    const auto options = TWText::split(mount.superOptions, ',');
    const auto owner = "user_id=" + std::to_string(getuid());
    const bool isOwn = std::find(options.begin(), options.end(), owner) != options.end();
    return geteuid() != 0 && mount.type.starts_with("fuse") && isOwn;
}

std::string TWFuseWay::unmount(const TWJudgedMount& judged, TWUnmountKind kind, TWDeadline::Duration limit)
{
    std::vector<std::string> arguments{ "-u", "--", judged.mount.point };
    if (kind == TWUnmountKind::Lazy)
        arguments.insert(arguments.begin() + 1, "-z");
    return TWRunTool(name(), arguments, limit);
}
