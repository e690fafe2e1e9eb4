#include "platform/linux/TWLinuxOpenFile.h"

#include "platform/linux/TWLinuxFacts.h"
#include "platform/linux/TWLinuxOpen.h"

#include <cerrno>
#include <limits>

std::unique_ptr<TWLinuxOpenFile> TWLinuxOpenFile::open(int folder, const char* path, int& error)
{
    struct stat found { };
    auto file = TWLinuxOpenRegular(folder, path, found);
    error = file.isOpen() ? 0 : errno;
    return file.isOpen() ? std::unique_ptr<TWLinuxOpenFile>(new TWLinuxOpenFile(std::move(file))) : nullptr;
}

TWFileFacts TWLinuxOpenFile::facts() const
{
    struct stat found { };
    return fstat(descriptor_.get(), &found) == 0 ? TWFactsFrom(found) : TWFileFacts();
}

int TWLinuxOpenFile::read(std::uint64_t place, std::size_t length, std::string& bytes) const
{
    bytes.resize(place <= std::numeric_limits<off_t>::max() - length ? length : 0);
    std::size_t done = 0;
    int error = 0;
    while (done < bytes.size()) {
        const auto got
            = pread(descriptor_.get(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(place + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            error = got < 0 ? errno : 0;
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    bytes.resize(done);
    return error;
}
