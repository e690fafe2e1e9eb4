#include "TWRootWay.h"

#include "TWBoundedChild.h"
#include "platform/TWFileSystem.h"

#include <cerrno>
#include <sys/mount.h>

bool TWRootWay::applies(const TWLinuxMount&)
{
    return geteuid() == 0;
}

std::string TWRootWay::unmount(const TWJudgedMount& judged, TWUnmountKind kind, TWDeadline::Duration limit)
{
    const auto path = "./" + judged.name;
    const int flags = UMOUNT_NOFOLLOW | (kind == TWUnmountKind::Lazy ? MNT_DETACH : 0);
    const auto end = TWRunInChild(
        [&] { return fchdir(judged.parent.get()) == 0 && umount2(path.c_str(), flags) == 0 ? 0 : errno; }, limit);
    if (!end.isInTime)
        return "it did not answer in time";
    return end.status == 0 ? "" : TWErrorText(end.status);
}
