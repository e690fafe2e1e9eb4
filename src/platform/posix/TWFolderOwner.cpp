#include "platform/posix/TWFolderOwner.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

int TWGiveToFolderOwner(int descriptor, const std::string& folder)
{
    struct stat facts;
    if (geteuid() != 0)
        return 0;
    if (stat(folder.c_str(), &facts) != 0)
        return errno;
    if (facts.st_uid == 0)
        return 0;
    return fchown(descriptor, facts.st_uid, facts.st_gid) == 0 ? 0 : errno;
}
