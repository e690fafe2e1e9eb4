#include "platform/linux/TWLinuxMountInfo.h"

#include "platform/posix/TWDescriptor.h"

#include <algorithm>
#include <charconv>
#include <fcntl.h>
#include <optional>
#include <sys/sysmacros.h>

namespace {

bool isOctal(char digit)
{
    return digit >= '0' && digit <= '7';
}

std::string_view takeUntil(std::string_view& rest, char separator)
{
    const auto taken = rest.substr(0, rest.find(separator));
    rest.remove_prefix(std::min(taken.size() + 1, rest.size()));
    return taken;
}

template <typename Number>
bool read(std::string_view text, Number& number)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool readDevice(std::string_view text, std::uint64_t& device)
{
    unsigned major = 0;
    unsigned minor = 0;
    const auto first = takeUntil(text, ':');
    if (!read(first, major) || !read(text, minor))
        return false;
    device = makedev(major, minor);
    return true;
}

// The fields are separated by single spaces; any number of optional ones ends with a dash.
std::optional<TWLinuxMount> mountIn(std::string_view line)
{
    TWLinuxMount mount;
    const bool hasNumbers = read(takeUntil(line, ' '), mount.identifier) && read(takeUntil(line, ' '), mount.parent)
        && readDevice(takeUntil(line, ' '), mount.deviceNumber);
    takeUntil(line, ' '); // the folder of the file system that is mounted
    mount.point = TWLinuxWithoutMountEscapes(takeUntil(line, ' '));
    while (!line.empty() && takeUntil(line, ' ') != "-") { }
    mount.type = TWLinuxWithoutMountEscapes(takeUntil(line, ' '));
    mount.source = TWLinuxWithoutMountEscapes(takeUntil(line, ' '));
    mount.superOptions = line;
    if (!hasNumbers || !mount.point.starts_with('/') || line.empty())
        return std::nullopt;
    return mount;
}

}

TWLinuxMounts TWLinuxMountsIn(std::string_view mountInfo)
{
    TWLinuxMounts mounts;
    while (!mountInfo.empty()) {
        auto mount = mountIn(takeUntil(mountInfo, '\n'));
        if (!mount)
            return {};
        mounts.push_back(std::move(*mount));
    }
    return mounts;
}

TWLinuxMounts TWLinuxReadMounts(int table)
{
    if (table < 0 || lseek(table, 0, SEEK_SET) != 0)
        return {};
    std::string text;
    char buffer[16384];
    ssize_t length = 0;
    while ((length = ::read(table, buffer, sizeof buffer)) > 0)
        text.append(buffer, static_cast<std::size_t>(length));
    return length < 0 ? TWLinuxMounts() : TWLinuxMountsIn(text);
}

TWLinuxMounts TWLinuxReadMounts()
{
    const TWDescriptor table(open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
    return TWLinuxReadMounts(table.get());
}

std::string TWLinuxWithoutMountEscapes(std::string_view text)
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
