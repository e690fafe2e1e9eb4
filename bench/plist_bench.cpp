// One round for plist.py: reads a property list from a file and writes it to another one, which is flushed and renamed
// into place. Prints the seconds that reading and writing took.

#include "plist/TWPropertyList.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::string fileBytes(const char* path)
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

bool writeFile(const std::string& path, std::string_view bytes)
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

}

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3) {
        std::fprintf(stderr, "usage: plist_bench FILE COPY\n");
        return 2;
    }
    const double start = now();
    TWPropertyListResult list = TWPropertyList::read(fileBytes(arguments[1]));
    const double readUntil = now();
    if (!list.value) {
        std::fprintf(stderr, "%s\n", list.problem.c_str());
        return 1;
    }
    const double writeFrom = now();
    const auto bytes = TWPropertyList::write(*list.value, list.format);
    if (!bytes || !writeFile(arguments[2], *bytes))
        return 1;
    const double writeUntil = now();
    list.value.reset();
    const double freeing = now() - writeUntil; // counts as well
    std::printf("%.6f %.6f\n", readUntil - start + freeing, writeUntil - writeFrom);
}
