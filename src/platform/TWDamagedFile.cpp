#include "platform/TWDamagedFile.h"

#include <cerrno>

int TWKeepDamagedFile(const TWFileSystem& fileSystem, const std::string& path, std::string& kept)
{
    kept = path + ".damaged";
    int error = fileSystem.copyFile(path, kept);
    for (int number = 2; error == EEXIST && number < 100; ++number) {
        kept = path + ".damaged." + std::to_string(number);
        error = fileSystem.copyFile(path, kept);
    }
    return error;
}
