#include "platform/linux/TWLinuxMountTable.h"

#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace {

// The table writes blank, tab, newline and backslash as a backslash and three octal digits.
std::string unescaped(std::string_view text)
{
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '\\' && index + 3 < text.size()) {
            result.push_back(static_cast<char>(
                (text[index + 1] - '0') * 64 + (text[index + 2] - '0') * 8 + (text[index + 3] - '0')));
            index += 3;
        } else {
            result.push_back(text[index]);
        }
    }
    return result;
}

std::string_view field(std::string_view line, int number)
{
    for (; number > 0; --number)
        line.remove_prefix(std::min(line.find(' '), line.size() - 1) + 1);
    return line.substr(0, line.find(' '));
}

}

TWLinuxMountTable::TWLinuxMountTable()
    : descriptor_(open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC))
{
    read();
}

TWLinuxMountTable::~TWLinuxMountTable()
{
    if (descriptor_ >= 0)
        close(descriptor_);
}

const std::vector<std::string>& TWLinuxMountTable::mountPoints()
{
    pollfd change{ descriptor_, POLLPRI, 0 };
    if (descriptor_ >= 0 && poll(&change, 1, 0) > 0)
        read();
    return mountPoints_;
}

void TWLinuxMountTable::read()
{
    mountPoints_.clear();
    if (descriptor_ < 0 || lseek(descriptor_, 0, SEEK_SET) != 0)
        return;
    std::string table;
    char buffer[16384];
    for (ssize_t length; (length = ::read(descriptor_, buffer, sizeof buffer)) > 0;)
        table.append(buffer, static_cast<std::size_t>(length));
    for (std::string_view rest = table; !rest.empty();) {
        const auto end = rest.find('\n');
        const auto line = rest.substr(0, end);
        if (!line.empty())
            mountPoints_.push_back(unescaped(field(line, 4)));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    }
}
