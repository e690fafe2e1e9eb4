#include "builders/TWHostileTree.h"
#include "builders/TWProgram.h"

#include <gtest/gtest.h>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <map>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace fs = std::filesystem;

namespace {

constexpr uid_t Nobody = 65534;

class TWSrmTests : public testing::Test {
protected:
    // prepare runs in the child before the helper.
    TWProgramResult srm(
        TWProgram::Words arguments, const std::function<bool()>& prepare = [] { return true; }) const
    {
        arguments.insert(arguments.begin(), TIDEWELL_LIBEXEC "/srm");
        return TWProgram(root, arguments, {}, prepare).wait();
    }

    // Modes do not stop root, so the helper then runs as someone to whom everything in the throwaway folder is given.
    TWProgramResult srmWithoutPrivileges(const TWProgram::Words& arguments, rlim_t largestFile = RLIM_INFINITY) const
    {
        const bool isRoot = geteuid() == 0;
        EXPECT_TRUE(!isRoot || std::system(("chown -R " + std::to_string(Nobody) + " " + root.path()).c_str()) == 0);
        return srm(
            arguments, [=] { return TWProgram::limit(RLIMIT_FSIZE, largestFile) && (!isRoot || setuid(Nobody) == 0); });
    }

    static auto lines(const TWProgramResult& result) { return std::count(result.err.begin(), result.err.end(), '\n'); }
    std::string canary() const { return root.read("outside/canary"); }

    TWTemporaryFolder root{
        "/var/tmp/tidewell-srm-XXXXXX"
    }; // /tmp may live in memory, where nothing counts as written
    const std::string tree = root.folder("tree");
    const std::string canaryPath = root.write("outside/canary", "canary");
};

}

TEST_F(TWSrmTests, AnyOtherUseIsRefusedInOneLine)
{
    const std::vector<TWProgram::Words> uses
        = { {}, { canaryPath }, { "-rf" }, { "-r", canaryPath }, { "--simple", "-rf", canaryPath },
              { "-rf", "--strong", canaryPath }, { "-rf", "--simple", canaryPath, canaryPath }, { "-rf", "" },
              { "-rf", "/" }, { "-rf", "///" }, { "-rf", "canary" }, { "-rf", root.path() + "/outside/." },
              { "-rf", root.path() + "/outside/..//" }, { "-rf", "/.." } };
    // Should a refusal ever fail, the helper must not be able to do harm: with a single descriptor it enters no folder.
    const auto disarm = [] { return close_range(3, ~0U, 0) == 0 && TWProgram::limit(RLIMIT_NOFILE, 4); };
    ASSERT_EQ(srm({ "-rf", root.path() + "/outside" }, disarm).status, 1);
    for (const auto& arguments : uses) {
        const auto outcome = srm(arguments, disarm);
        EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(lines(outcome), 1) << outcome.err;
    }
    EXPECT_EQ(canary(), "canary");
    EXPECT_EQ(srm({ "-rf", tree + "/none/of/it" }).status, 0);
}

TEST_F(TWSrmTests, HostileTreeGoesWithFewDescriptorsAndNothingOutsideIsTouched)
{
    const TWHostileTree hostile(root);
    const auto canaries = hostile.canaryDigest();
    fs::rename(root.path("hostile/hard-link"), root.path("hostile/second\nname"));
    for (const char* locked : { "hostile/unreadable", "hostile/read-only" })
        fs::permissions(root.path(locked), fs::perms(0700));
    const auto result
        = srm({ "-rf", "--medium", hostile.path() + "//" }, [] { return TWProgram::limit(RLIMIT_NOFILE, 64); });
    EXPECT_EQ(result.status, 0);
    EXPECT_FALSE(root.exists("hostile"));
    EXPECT_TRUE(result.err.starts_with("srm: " + hostile.path() + "/second\\x0aname: the file has several names"));
    EXPECT_EQ(lines(result), 1) << result.err;

    root.link("link", root.path("canary"));
    EXPECT_EQ(srm({ "-rf", root.path("link//") }).status, 0);
    EXPECT_FALSE(root.exists("link"));
    EXPECT_EQ(hostile.canaryDigest(), canaries);
    EXPECT_EQ(fs::hard_link_count(root.path("canary/file")), 1u);
}

TEST_F(TWSrmTests, EachPassReachesTheDiskAndHolesAreLeftOut)
{
    constexpr long Blocks = 1024; // 512 KiB
    constexpr long Around = 200; // the folder's blocks and the system's own
    const auto file = root.path("tree/file");
    const std::pair<std::vector<std::string>, long> levels[]
        = { { { "-rf", "--simple", file }, 1 }, { { "-rf", "--medium", file }, 7 }, { { "-rf", file }, 35 } };
    for (const auto& [arguments, passes] : levels) {
        root.write("tree/file", std::string(Blocks * 512 - 100, 'x'));
        sync();
        const auto outcome = srm(arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_GE(outcome.blocksWritten, passes * Blocks);
        EXPECT_LE(outcome.blocksWritten, passes * Blocks + Around);
    }
    root.write("tree/file", std::string(1024, 'x'));
    fs::resize_file(file, 8 << 20);
    EXPECT_LE(srm({ "-rf", "--simple", file }).blocksWritten, Around);
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(TWSrmTests, FileThatCannotBeOverwrittenToItsEndKeepsItsNameAndMode)
{
    constexpr std::size_t Limit = 64 * 1024;
    const auto file = root.path("tree/file");
    root.write("tree/file", std::string(2 * Limit, 'x'));
    fs::permissions(file, fs::perms(0440));
    const auto outcome = srmWithoutPrivileges({ "-rf", "--medium", tree }, Limit);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "srm: " + file + ": File too large\n");
    const std::string left = root.read("tree/file");
    ASSERT_EQ(left.size(), 2 * Limit);
    EXPECT_LT(std::count(left.begin(), left.begin() + Limit, 'x'), 500); // one random byte in 256 is an x
    EXPECT_EQ(left.substr(Limit), std::string(Limit, 'x'));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0440));
}

TEST_F(TWSrmTests, FailedFlushOrRemovalKeepsTheNameAndFailedRenameDoesNot)
{
    for (const unsigned call : { SYS_fdatasync, SYS_unlinkat, SYS_renameat2 }) {
        const auto file = root.write("tree/file" + std::to_string(call), "x");
        sock_filter steps[] = { BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0), BPF_JUMP(BPF_JMP | BPF_JEQ, call, 0, 1),
            BPF_STMT(BPF_RET, SECCOMP_RET_ERRNO | EPERM), BPF_STMT(BPF_RET, SECCOMP_RET_ALLOW) };
        const sock_fprog filter = { std::size(steps), steps };
        const auto outcome = srm({ "-rf", "--simple", file }, [&filter] {
            return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
                && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
        });
        EXPECT_EQ(outcome.status, call == SYS_renameat2 ? 0 : 1) << outcome.err;
        EXPECT_EQ(fs::exists(file), call != SYS_renameat2) << outcome.err;
    }
}

TEST_F(TWSrmTests, ProtectedFoldersAreKeptUnspoiled)
{
    const std::map<std::string, fs::perms> folders
        = { { "tree/closed", fs::perms(0) }, { "tree/read only", fs::perms(0555) } };
    for (const auto& [name, mode] : folders) {
        root.write(name + "/file", "precious");
        fs::permissions(root.path(name), mode);
    }
    const auto outcome = srmWithoutPrivileges({ "-rf", "--simple", tree });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(lines(outcome), 2) << outcome.err;
    for (const auto& [name, mode] : folders) {
        EXPECT_EQ(fs::status(root.path(name)).permissions(), mode);
        fs::permissions(root.path(name), fs::perms(0755));
        EXPECT_EQ(root.read(name + "/file"), "precious");
    }
}

TEST_F(TWSrmTests, ImmutableFileIsKept)
{
    if (std::system(("chattr +i '" + canaryPath + "' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "files cannot be made immutable here";
    const auto outcome = srm({ "-rf", root.path() + "/outside" });
    EXPECT_EQ(std::system(("chattr -i '" + canaryPath + "'").c_str()), 0);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "srm: " + canaryPath + ": Operation not permitted\n");
    EXPECT_EQ(canary(), "canary");
}

TEST_F(TWSrmTests, WhatIsMountedInsideIsNotEntered)
{
    const auto bound = root.folder("tree/bound");
    root.write("tree/other", "x");
    const auto outcome = srm({ "-rf", "--simple", tree }, [&] {
        return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
            && mount((root.path() + "/outside").c_str(), bound.c_str(), nullptr, MS_BIND, nullptr) == 0;
    });
    if (outcome.status == TWProgram::CannotPrepare)
        GTEST_SKIP() << "nothing can be mounted here";
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(lines(outcome), 1) << outcome.err;
    EXPECT_EQ(canary(), "canary");
    EXPECT_FALSE(root.exists("tree/other"));
}
