#include "platform/posix/TWPosixOwnFiles.h"

#include "builders/TWTemporaryFolder.h"
#include "builders/TWThisProcess.h"
#include "platform/posix/TWPosixLocks.h"
#include "platform/posix/TWTemporaryFile.h"

#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

namespace {

class TWPosixOwnFilesTest : public testing::Test {
protected:
    std::set<std::string> listing() const
    {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(temporary.path()))
            names.insert(entry.path().filename());
        return names;
    }
    // Runs the function in a child that is killed at its given system call, counted from 0, entries and returns apart.
    // True if the child came to its end before that.
    template <typename Function>
    static bool endsBefore(int systemCall, Function function)
    {
        const pid_t child = fork();
        if (child == 0) {
            ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            raise(SIGSTOP);
            function();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        for (; WIFSTOPPED(status) && systemCall >= 0; --systemCall) {
            ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
            waitpid(child, &status, 0);
        }
        if (!WIFSTOPPED(status))
            return true;
        kill(child, SIGKILL);
        waitpid(child, &status, 0);
        return false;
    }
    static struct stat facts(const std::string& path)
    {
        struct stat found { };
        lstat(path.c_str(), &found);
        return found;
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
}

TEST_F(TWPosixOwnFilesTest, TellsWhatIsMissingFromWhatIsBehindADanglingLink)
{
    temporary.link("stick", "/nowhere/stick");
    temporary.link("list", "stick/list");
    temporary.link("below a file", temporary.write("file", "") + "/x");
    for (const auto& [name, dangling] : { std::pair("none", false), { "none/none", false }, { "file/none", false },
             { "stick", true }, { "stick/list", true }, { "list", true }, { "below a file", true } })
        EXPECT_EQ(files.read(temporary.path(name), 9).error == ENOLINK, dangling) << name;
}

TEST_F(TWPosixOwnFilesTest, GivesADamagedFileASecondName)
{
    const std::string file = temporary.write("file", "12345");
    std::string kept;
    temporary.link("file.damaged", "nothing");
    for (int attempt = 0; attempt < 2; attempt++) { // the write that followed the first one has failed
        EXPECT_EQ(files.keepDamaged(file, 9, kept), 0);
        EXPECT_EQ(kept, temporary.path("file.damaged.2"));
    }
    EXPECT_EQ(files.writeAtomically(file, "new"), 0);
    EXPECT_EQ(temporary.read("file.damaged.2"), "12345");
    temporary.link("link", "folder/target");
    const std::string target = temporary.write("folder/target", "");
    ASSERT_EQ(truncate(target.c_str(), off_t(1) << 40), 0); // copying it would fill the disk
    EXPECT_EQ(files.keepDamaged(temporary.path("link"), 9, kept), 0);
    EXPECT_EQ(kept, target + ".damaged");
    EXPECT_EQ(files.keepDamaged(temporary.path("folder"), 9, kept), EISDIR);
    EXPECT_EQ(files.keepDamaged(temporary.path("none"), 9, kept), ENOENT);
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become somebody who may read a file but not link it";
    chmod(temporary.path().c_str(), 0777);
    chmod(file.c_str(), 0644);
    endsBefore(INT_MAX, [&] {
        const bool tooLong = setuid(1234) == 0 && files.keepDamaged(file, 2, kept) == EFBIG;
        _exit(tooLong && files.keepDamaged(file, 3, kept) == 0 ? 0 : 1);
    });
    EXPECT_EQ(temporary.read("file.damaged.3"), "new");
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
    EXPECT_EQ(facts(file).st_mode & 07777, 0640u);

    temporary.link("loop", "loop");
    EXPECT_EQ(files.writeAtomically(temporary.path("loop"), "x"), ELOOP);
    EXPECT_EQ(files.writeAtomically(temporary.folder("folder"), "x"), EISDIR);
    EXPECT_EQ(files.writeAtomically(temporary.path("nothing/x"), "x"), ENOENT);
    const auto before = listing();
    signal(SIGXFSZ, SIG_IGN);
    {
        const TWLowerLimit size(RLIMIT_FSIZE, 1000); // as a full disk: the write fails half way
        EXPECT_EQ(files.writeAtomically(file, std::string(5000, 'x')), EFBIG);
    }
    signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(temporary.read(std::string(255, 'n')), "new");
    EXPECT_EQ(listing(), before);
}

TEST_F(TWPosixOwnFilesTest, AWriteThatIsKilledLeavesAWholeFileAndNothingForLong)
{
    const std::string file = temporary.write("list", "old");
    int kills = 0;
    while (!endsBefore(kills, [&] { files.writeAtomically(file, "new"); })) {
        kills++;
        EXPECT_TRUE(temporary.read("list") == "old" || temporary.read("list") == "new") << kills;
        EXPECT_LE(listing().size(), 2u) << kills;
        if (kills % 2 == 0)
            files.removeLeftovers(temporary.path());
        else
            EXPECT_EQ(files.writeAtomically(file, "old"), 0) << kills;
        EXPECT_EQ(listing(), std::set<std::string>{ "list" }) << kills;
    }
    EXPECT_GT(kills, 10);
    EXPECT_EQ(temporary.read("list"), "new");
}

TEST_F(TWPosixOwnFilesTest, OneWriterAtATime)
{
    const std::string file = temporary.write("list", "old");
    TWTemporaryFile other(file);
    EXPECT_EQ(other.create(), 0);
    EXPECT_EQ(files.writeAtomically(file, "new"), EBUSY);
    files.removeLeftovers(temporary.path());
    EXPECT_EQ(listing().size(), 2u);
    EXPECT_EQ(temporary.read("list"), "old");
}

// Each starting command tidies up, also while another one saves.
TEST_F(TWPosixOwnFilesTest, TidyingUpDisturbsNoWriter)
{
    std::atomic<bool> isDone = false;
    std::thread tidying([&, path = temporary.path()] {
        for (; !isDone; std::this_thread::sleep_for(std::chrono::microseconds(1)))
            files.removeLeftovers(path);
    });
    for (int round = 0; round < 5000; ++round)
        EXPECT_EQ(TWTemporaryFile(temporary.path("list")).create(), 0) << round;
    isDone = true;
    tidying.join();
}

TEST_F(TWPosixOwnFilesTest, RemovesLeftoversOnly)
{
    for (const char* other : { "0123456789abcde", "0123456789abcdeF", "0123456789abcdef0" })
        temporary.write(std::string(".tidewell-") + other, "");
    temporary.folder(".tidewell-0000000000000001");
    temporary.link(".tidewell-0000000000000002", "list");
    const auto others = listing();
    temporary.write(".tidewell-0123456789abcdef", "words");
    files.removeLeftovers(temporary.path());
    files.removeLeftovers(temporary.path("none"));
    EXPECT_EQ(listing(), others);
}

TEST_F(TWPosixOwnFilesTest, WhatRootMakesBelongsToTheOwnerOfTheFolder)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root";
    ASSERT_EQ(chown(temporary.path().c_str(), 1234, 1234), 0);
    EXPECT_EQ(files.makeFolders(temporary.path("a/b")), 0);
    EXPECT_EQ(files.writeAtomically(temporary.path("a/b/new"), "x"), 0);
    EXPECT_TRUE(TWPosixLocks().tryLock(temporary.path("a/lock")).lock);
    for (const char* made : { "a", "a/b", "a/b/new", "a/lock" })
        EXPECT_EQ(facts(temporary.path(made)).st_uid, 1234u) << made;
    ASSERT_EQ(chown(temporary.path("a/b/new").c_str(), 4321, 4321), 0);
    EXPECT_EQ(files.writeAtomically(temporary.path("a/b/new"), "y"), 0);
    EXPECT_EQ(facts(temporary.path("a/b/new")).st_uid, 4321u);
}
