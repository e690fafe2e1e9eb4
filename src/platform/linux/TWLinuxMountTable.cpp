#include "platform/linux/TWLinuxMountTable.h"

#include "platform/linux/TWLinuxMountInfo.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>

TWLinuxMountTable::TWLinuxMountTable()
    : table_(open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC))
    , mountPoints_(std::make_shared<const TWMountPoints>(read()))
{
}

std::shared_ptr<const TWMountPoints> TWLinuxMountTable::mountPoints()
{
    pollfd change{ table_.get(), POLLPRI, 0 };
    if (table_.isOpen() && poll(&change, 1, 0) > 0)
        mountPoints_ = std::make_shared<const TWMountPoints>(read());
    return mountPoints_;
}

TWMountPoints TWLinuxMountTable::read() const
{
    TWMountPoints points;
    for (auto& mount : TWLinuxReadMounts(table_.get()))
        points.push_back(std::move(mount.point));
    std::sort(points.begin(), points.end());
    return points;
}
