#pragma once

#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

// Reads a whole file; an empty string if that fails.
inline std::string fileBytes(const char* path)
{
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    struct stat facts { };
    std::string bytes;
    if (file < 0 || fstat(file, &facts) != 0)
        return bytes;
    bytes.resize(std::size_t(facts.st_size));
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count = read(file, bytes.data() + done, bytes.size() - done);
        if (count <= 0)
            return {};
        done += std::size_t(count);
    }
    close(file);
    return bytes;
}

// Writes a temporary file, flushes it and renames it into place.
inline bool writeFile(const std::string& path, std::string_view bytes)
{
    const std::string temporary = path + ".new";
    const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0)
        return false;
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count = write(file, bytes.data() + done, bytes.size() - done);
        if (count <= 0)
            return false;
        done += std::size_t(count);
    }
    return fsync(file) == 0 && close(file) == 0 && rename(temporary.c_str(), path.c_str()) == 0;
}
