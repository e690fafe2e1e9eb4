#include "platform/posix/TWPosixOwnFiles.h"

#include "builders/TWTemporaryFolder.h"

#include <gtest/gtest.h>
#include <set>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

// Gives back the old one.
rlim_t setLimit(__rlimit_resource resource, rlim_t value)
{
    rlimit limits{};
    getrlimit(resource, &limits);
    std::swap(limits.rlim_cur, value);
    setrlimit(resource, &limits);
    return value;
}

class TWPosixOwnFilesTest : public testing::Test {
protected:
    std::set<std::string> listing() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(temporary.path()))
            names.insert(entry.path());
        return names;
    }

    TWTemporaryFolder temporary;
    TWPosixOwnFiles files;
};

}

TEST_F(TWPosixOwnFilesTest, MakesFoldersAndReadsPlainFilesOnly)
{
    EXPECT_EQ(files.makeFolders(temporary.path("a//b/c/")), 0);
    const std::string file = temporary.write("a/file", "12345");
    EXPECT_EQ(files.makeFolders(file), EEXIST);
    EXPECT_EQ(files.makeFolders(file + "/x"), EEXIST);
    mkfifo(temporary.path("pipe").c_str(), 0600);
    EXPECT_EQ(files.read(file, 5).bytes, "12345");
    EXPECT_EQ(files.read(file, 4).error, EFBIG);
    EXPECT_EQ(files.read(temporary.path("a"), 9).error, EISDIR);
    EXPECT_EQ(files.read(temporary.path("pipe"), 9).error, EINVAL);
    EXPECT_GT(files.read("/proc/self/status", 1 << 20).bytes.size(), 0u);

    std::string kept;
    temporary.link("a/file.damaged", "nothing");
    EXPECT_EQ(files.keepDamaged(file, kept), 0);
    EXPECT_EQ(kept, temporary.path("a/file.damaged.2"));
    EXPECT_EQ(temporary.read("a/file.damaged.2"), "12345");
}

TEST_F(TWPosixOwnFilesTest, AWriteIsWholeOrDoesNotHappen)
{
    const std::string file = temporary.write(std::string(255, 'n'), "old");
    chmod(file.c_str(), 0640);
    temporary.link("two", "one");
    temporary.link("one", temporary.path("data"));
    EXPECT_EQ(files.writeAtomically(temporary.path("two"), "new"), 0); // the target does not exist yet
    EXPECT_EQ(std::filesystem::is_symlink(temporary.path("two")), true);
    EXPECT_EQ(temporary.read("data"), "new");
    EXPECT_EQ(files.writeAtomically(file, "new"), 0);
    struct stat found;
    stat(file.c_str(), &found);
    EXPECT_EQ(found.st_mode & 07777, 0640u);

    temporary.link("loop", "loop");
    EXPECT_EQ(files.writeAtomically(temporary.path("loop"), "x"), ELOOP);
    EXPECT_EQ(files.writeAtomically(temporary.folder("folder"), "x"), EISDIR);
    EXPECT_EQ(files.writeAtomically(temporary.path("nothing/x"), "x"), ENOENT);
    const auto before = listing();
    signal(SIGXFSZ, SIG_IGN);
    const auto size = setLimit(RLIMIT_FSIZE, 1000); // as a full disk: the write fails half way
    EXPECT_EQ(files.writeAtomically(file, std::string(5000, 'x')), EFBIG);
    setLimit(RLIMIT_FSIZE, size);
    signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(temporary.read(std::string(255, 'n')), "new");
    EXPECT_EQ(listing(), before);
}
