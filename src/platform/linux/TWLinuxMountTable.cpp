#include "platform/linux/TWLinuxMountTable.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>

namespace {

constexpr int MountPointField = 4; // counted from 0; fields are separated by single spaces

bool isOctal(char digit)
{
    return digit >= '0' && digit <= '7';
}

// The table escapes space, tab, newline and backslash as a backslash and three octal digits.
std::string unescaped(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const bool escape = text.size() > 3 && text[0] == '\\' && std::all_of(&text[1], &text[4], isOctal);
        if (escape)
            result.push_back(static_cast<char>((text[1] - '0') * 64 + (text[2] - '0') * 8 + (text[3] - '0')));
        else
            result.push_back(text.front());
        text.remove_prefix(escape ? 4 : 1);
    }
    return result;
}

std::string_view takeUntil(std::string_view& rest, char separator)
{
    const auto taken = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(taken.size() + 1, rest.size()));
    return taken;
}

}

TWMountPoints TWMountPointsIn(std::string_view mountInfo)
{
    TWMountPoints points;
    while (!mountInfo.empty()) {
        auto line = takeUntil(mountInfo, '\n');
        for (int field = 0; field < MountPointField; ++field)
            takeUntil(line, ' ');
        const auto point = takeUntil(line, ' ');
        if (!point.starts_with('/') || line.empty())
            return {};
        points.push_back(unescaped(point));
    }
    std::sort(points.begin(), points.end());
    return points;
}

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
    if (!table_.isOpen() || lseek(table_.get(), 0, SEEK_SET) != 0)
        return {};
    std::string text;
    char buffer[16384];
    ssize_t length = 0;
    while ((length = ::read(table_.get(), buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<std::size_t>(length));
    return length < 0 ? TWMountPoints() : TWMountPointsIn(text);
}
