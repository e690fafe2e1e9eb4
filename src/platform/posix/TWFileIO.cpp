#include "platform/posix/TWFileIO.h"

#include <unistd.h>

#include <cerrno>

namespace {

constexpr std::size_t PieceSize = std::size_t{ 64 } * 1024;

// Returns the number of bytes read, 0 at the end of the file, or -1 with errno set.
ssize_t readSome(int file, char* buffer, std::size_t size)
{
    ssize_t length;
    do
        length = ::read(file, buffer, size);
    while (length < 0 && errno == EINTR);
    return length;
}

}

int TWReadAll(int file, std::size_t limit, const std::function<bool(std::string_view)>& take)
{
    char buffer[PieceSize];
    for (;;) { // does not trust the file's size: the file can grow, and in /proc its size is 0
        const ssize_t length = readSome(file, buffer, sizeof buffer);
        if (length < 0)
            return errno;
        if (static_cast<std::size_t>(length) > limit)
            return EFBIG;
        limit -= static_cast<std::size_t>(length);
        if (length == 0 || !take({ buffer, static_cast<std::size_t>(length) }))
            return 0;
    }
}

int TWWriteAll(int file, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t length = ::write(file, bytes.data(), bytes.size());
        if (length >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(length));
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}
