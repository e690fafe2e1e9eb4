#include "platform/linux/TWLinuxPreferenceFiles.h"

#include "builders/TWTemporaryFolder.h"
#include "platform/linux/TWLinuxFileSystem.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>

namespace {

class TWLinuxPreferenceFilesTest : public testing::Test {
protected:
    std::string contents(const std::string& name = "rc") const
    {
        std::ifstream file(root.path(name), std::ios::binary);
        return { std::istreambuf_iterator<char>(file), {} };
    }
    std::size_t entries() const
    {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(root.path()), std::filesystem::directory_iterator()));
    }
    TWPreferenceFiles::Contents read(const std::string& name, std::size_t limit = 1000) const
    {
        return files.read(*folder, name, limit);
    }
    int replace(std::string_view bytes) const
    {
        return files.replace(*folder, "rc", read("rc", 1'000'000).facts, bytes).error;
    }
    // Runs it in a child until its given stop before or after a system call, and kills it there. Returns false if the
    // child ended before.
    template <typename Work>
    static bool killedAt(int stop, const Work& work)
    {
        const pid_t child = fork();
        if (child == 0) {
            ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            raise(SIGSTOP);
            work();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        for (; stop > 0 && WIFSTOPPED(status); --stop) {
            ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
            waitpid(child, &status, 0);
        }
        if (!WIFSTOPPED(status))
            return false;
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
        return true;
    }

    TWTemporaryFolder root;
    TWLinuxFileSystem fileSystem;
    TWLinuxPreferenceFiles files;
    int error = 0;
    std::unique_ptr<TWHeldFolder> folder = fileSystem.holdFolder(root.path(), error);
};

}

TEST_F(TWLinuxPreferenceFilesTest, ReadsRegularFilesOnly)
{
    root.write("rc", "0123456789");
    root.link("link", "rc");
    root.folder("folder");
    ASSERT_EQ(mkfifo(root.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(read("rc").bytes, "0123456789");
    EXPECT_EQ(files.readBeginning(*folder, "rc", 4).bytes, "0123");
    EXPECT_EQ(read("rc", 9).error, EFBIG);
    EXPECT_EQ(read("link").error, ELOOP);
    EXPECT_EQ(read("folder").error, EISDIR);
    EXPECT_EQ(read("fifo").error, EINVAL);
    EXPECT_EQ(read("none").error, ENOENT);
    EXPECT_EQ(read("../rc").error, EINVAL);
}

TEST_F(TWLinuxPreferenceFilesTest, AReplacedFileKeepsWhatBelongsToIt)
{
    root.write("rc", "old");
    const auto path = root.path("rc");
    ASSERT_EQ(chmod(path.c_str(), 0754), 0);
    const bool hasAttributes = setxattr(path.c_str(), "user.note", "kept", 4, 0) == 0;
    const auto seen = read("rc").facts;
    const auto replaced = files.replace(*folder, "rc", seen, "new");
    EXPECT_EQ(replaced.error, 0);
    EXPECT_EQ(contents(), "new");
    EXPECT_TRUE(replaced.facts.isUnchanged(read("rc").facts));
    struct stat found { };
    ASSERT_EQ(stat(path.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 07777, 0754U);
    char value[44];
    EXPECT_TRUE(!hasAttributes || getxattr(path.c_str(), "user.note", value, sizeof value) == 4);
    // An access control list that new files of the folder get would open the file to others.
    const unsigned char list[44] = { 2, 0, 0, 0, 1, 0, 7, 0, 255, 255, 255, 255, 2, 0, 7, 0, 254, 255, 0, 0, 4, 0, 5, 0,
        255, 255, 255, 255, 16, 0, 7, 0, 255, 255, 255, 255, 32, 0, 0, 0, 255, 255, 255, 255 };
    if (setxattr(root.path().c_str(), "system.posix_acl_default", list, sizeof list, 0) == 0) {
        EXPECT_EQ(replace("with a list on the folder"), 0);
        EXPECT_EQ(getxattr(path.c_str(), "system.posix_acl_access", value, sizeof value), -1);
        EXPECT_EQ(replace("new"), 0);
    }
    EXPECT_EQ(files.replace(*folder, "rc", seen, "newer").error, ESTALE) << "it is another file by now";
    EXPECT_EQ(contents(), "new");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(TWLinuxPreferenceFilesTest, AFullDiskLeavesTheOldFile)
{
    root.write("rc", "old");
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{ 4096, 4096 };
        std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &limit);
        _exit(replace(std::string(8192, 'x')) == EFBIG ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(contents(), "old");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(TWLinuxPreferenceFilesTest, AKillAtAnySystemCallLeavesTheOldOrTheNewFileWhole)
{
    const std::string before(100'000, 'a');
    const std::string after(90'000, 'b');
    int stop = 0;
    bool seenOld = false;
    bool seenNew = false;
    bool killed = true;
    for (; killed; ++stop) {
        root.write("rc", before);
        killed = killedAt(stop, [&] { replace(after); });
        const auto found = contents();
        seenOld = seenOld || found == before;
        seenNew = seenNew || found == after;
        ASSERT_TRUE(found == before || found == after) << "at stop " << stop;
        ASSERT_LE(entries(), 2U);
    }
    EXPECT_GT(stop, 20);
    EXPECT_TRUE(seenOld && seenNew);
    EXPECT_EQ(replace(after), 0);
    EXPECT_EQ(entries(), 1U) << "what a killed write left is removed by the next one";
}
