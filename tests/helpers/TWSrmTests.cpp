#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <map>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace std::string_literals;

namespace {

constexpr int CannotPrepare = 77;
constexpr uid_t Nobody = 65534;

struct Outcome {
    int code = -1;
    std::string errors;
    long blocksWritten = 0; // of 512 bytes; pages made dirty again after they went to the disk count again
    auto lines() const { return std::count(errors.begin(), errors.end(), '\n'); }
};

bool limit(__rlimit_resource resource, rlim_t value)
{
    const rlimit both = { value, value };
    return setrlimit(resource, &both) == 0;
}

std::string read(const std::string& path)
{
    std::ifstream file(path);
    return { std::istreambuf_iterator<char>(file), {} };
}

class TWSrmTests : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(mkdtemp(base_.data()), nullptr);
        fs::create_directories(tree_ = base_ + "/tree");
        fs::create_directories(base_ + "/outside");
        write(canary_ = base_ + "/outside/canary", "canary");
    }
    void TearDown() override { fs::remove_all(base_); }

    static void write(const std::string& path, const std::string& bytes) { std::ofstream(path) << bytes; }
    static bool isThere(const std::string& path) { return fs::exists(fs::symlink_status(path)); }

    // prepare runs in the child before the helper; false ends the child with CannotPrepare.
    Outcome srm(std::vector<std::string> arguments, const std::function<bool()>& prepare = nullptr)
    {
        arguments.insert(arguments.begin(), "srm");
        std::vector<char*> pointers;
        for (std::string& argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        const std::string errors = base_ + "/errors";
        const pid_t child = fork();
        if (child == 0) {
            dup2(open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), STDERR_FILENO);
            if (!prepare || prepare())
                execv(TIDEWELL_LIBEXEC "/srm", pointers.data());
            _exit(CannotPrepare);
        }
        int status = 0;
        rusage usage = {};
        wait4(child, &status, 0, &usage);
        return { WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(errors), usage.ru_oublock };
    }

    // Modes do not stop root, so the helper then runs as someone to whom everything in the throwaway folder is given.
    Outcome srmWithoutPrivileges(const std::vector<std::string>& arguments, rlim_t largestFile = RLIM_INFINITY)
    {
        const bool root = geteuid() == 0;
        EXPECT_TRUE(!root || std::system(("chown -R " + std::to_string(Nobody) + " " + base_).c_str()) == 0);
        return srm(arguments, [=] { return limit(RLIMIT_FSIZE, largestFile) && (!root || setuid(Nobody) == 0); });
    }

    std::string base_ = "/var/tmp/tidewell-srm-XXXXXX"; // /tmp may live in memory, where nothing counts as written
    std::string tree_;
    std::string canary_;
};

}

TEST_F(TWSrmTests, AnyOtherUseIsRefusedInOneLine)
{
    const std::vector<std::vector<std::string>> uses = { {}, { canary_ }, { "-rf" }, { "-r", canary_ },
        { "--simple", "-rf", canary_ }, { "-rf", "--strong", canary_ }, { "-rf", "--simple", canary_, canary_ },
        { "-rf", "" }, { "-rf", "/" }, { "-rf", "///" }, { "-rf", "canary" }, { "-rf", base_ + "/outside/." },
        { "-rf", base_ + "/outside/..//" }, { "-rf", "/.." } };
    // Should a refusal ever fail, the helper must not be able to do harm: with a single descriptor it enters no folder.
    const auto disarm = [] { return close_range(3, ~0U, 0) == 0 && limit(RLIMIT_NOFILE, 4); };
    ASSERT_EQ(srm({ "-rf", base_ + "/outside" }, disarm).code, 1);
    for (const auto& arguments : uses) {
        const Outcome outcome = srm(arguments, disarm);
        EXPECT_EQ(outcome.code, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(outcome.lines(), 1) << outcome.errors;
    }
    EXPECT_EQ(read(canary_), "canary");
    EXPECT_EQ(srm({ "-rf", tree_ + "/none/of/it" }).code, 0);
}

TEST_F(TWSrmTests, HostileTreeGoesAndNothingOutsideIsTouched)
{
    for (const std::string& name :
        { "\xff\xfe invalid"s, "line\nbreak"s, "-rf"s, " "s, "..."s, std::string(255, 'n') }) {
        write(tree_ + "/" + name, std::string(5000, 'x'));
        fs::create_directory(tree_ + "/folder" + name.substr(0, 200));
        write(tree_ + "/folder" + name.substr(0, 200) + "/" + name, "");
    }
    for (const std::string& target : { canary_, base_ + "/outside", "nowhere"s, "."s })
        fs::create_symlink(target, tree_ + "/to " + fs::path(target).filename().string());
    fs::create_hard_link(canary_, tree_ + "/second\nname");
    for (const mode_t kind : { S_IFIFO, S_IFSOCK })
        ASSERT_EQ(mknod((tree_ + "/special" + std::to_string(kind)).c_str(), kind | 0600, 0), 0);
    const Outcome outcome = srm({ "-rf", "--medium", tree_ + "//" });
    EXPECT_EQ(outcome.code, 0);
    EXPECT_FALSE(isThere(tree_));
    EXPECT_TRUE(outcome.errors.starts_with("srm: " + tree_ + "/second\\x0aname: the file has several names"));
    EXPECT_EQ(outcome.lines(), 1) << outcome.errors;

    fs::create_symlink(base_ + "/outside", base_ + "/link");
    EXPECT_EQ(srm({ "-rf", base_ + "/link//" }).code, 0);
    EXPECT_FALSE(isThere(base_ + "/link"));
    EXPECT_EQ(read(canary_), "canary");
    EXPECT_EQ(fs::hard_link_count(canary_), 1u);
}

TEST_F(TWSrmTests, DeepTreeGoesWithFewDescriptors)
{
    constexpr char Name[] = "a folder far below";
    int folder = open(tree_.c_str(), O_PATH | O_CLOEXEC);
    for (int depth = 0; depth < 3000; ++depth) {
        ASSERT_EQ(mkdirat(folder, Name, 0755), 0);
        const int below = openat(folder, Name, O_PATH | O_CLOEXEC);
        close(folder);
        folder = below;
        close(openat(folder, "file", O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
    }
    close(folder);
    EXPECT_EQ(srm({ "-rf", "--simple", tree_ }, [] { return limit(RLIMIT_NOFILE, 64); }).code, 0);
    EXPECT_FALSE(isThere(tree_));
}

TEST_F(TWSrmTests, EachPassReachesTheDiskAndHolesAreLeftOut)
{
    constexpr long Blocks = 1024; // 512 KiB
    constexpr long Around = 200; // the folder's blocks and the system's own
    const std::string file = tree_ + "/file";
    const std::pair<std::vector<std::string>, long> levels[]
        = { { { "-rf", "--simple", file }, 1 }, { { "-rf", "--medium", file }, 7 }, { { "-rf", file }, 35 } };
    for (const auto& [arguments, passes] : levels) {
        write(file, std::string(Blocks * 512 - 100, 'x'));
        sync();
        const Outcome outcome = srm(arguments);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_GE(outcome.blocksWritten, passes * Blocks);
        EXPECT_LE(outcome.blocksWritten, passes * Blocks + Around);
    }
    write(file, std::string(1024, 'x'));
    fs::resize_file(file, 8 << 20);
    EXPECT_LE(srm({ "-rf", "--simple", file }).blocksWritten, Around);
    EXPECT_FALSE(isThere(file));
}

TEST_F(TWSrmTests, FileThatCannotBeOverwrittenToItsEndKeepsItsNameAndMode)
{
    constexpr std::size_t Limit = 64 * 1024;
    const std::string file = tree_ + "/file";
    write(file, std::string(2 * Limit, 'x'));
    fs::permissions(file, fs::perms(0440));
    const Outcome outcome = srmWithoutPrivileges({ "-rf", "--medium", tree_ }, Limit);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, "srm: " + file + ": File too large\n");
    const std::string left = read(file);
    ASSERT_EQ(left.size(), 2 * Limit);
    EXPECT_LT(std::count(left.begin(), left.begin() + Limit, 'x'), 500); // one random byte in 256 is an x
    EXPECT_EQ(left.substr(Limit), std::string(Limit, 'x'));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0440));
}

TEST_F(TWSrmTests, FailedFlushOrRemovalKeepsTheNameAndFailedRenameDoesNot)
{
    for (const unsigned call : { SYS_fdatasync, SYS_unlinkat, SYS_renameat2 }) {
        const std::string file = tree_ + "/file" + std::to_string(call);
        write(file, "x");
        sock_filter steps[] = { BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0), BPF_JUMP(BPF_JMP | BPF_JEQ, call, 0, 1),
            BPF_STMT(BPF_RET, SECCOMP_RET_ERRNO | EPERM), BPF_STMT(BPF_RET, SECCOMP_RET_ALLOW) };
        const sock_fprog filter = { std::size(steps), steps };
        const Outcome outcome = srm({ "-rf", "--simple", file }, [&filter] {
            return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
                && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
        });
        EXPECT_EQ(outcome.code, call == SYS_renameat2 ? 0 : 1) << outcome.errors;
        EXPECT_EQ(isThere(file), call != SYS_renameat2) << outcome.errors;
    }
}

TEST_F(TWSrmTests, ProtectedFoldersAreKeptUnspoiled)
{
    const std::map<std::string, fs::perms> folders = { { "/closed", fs::perms(0) }, { "/read only", fs::perms(0555) } };
    for (const auto& [name, mode] : folders) {
        fs::create_directory(tree_ + name);
        write(tree_ + name + "/file", "precious");
        fs::permissions(tree_ + name, mode);
    }
    const Outcome outcome = srmWithoutPrivileges({ "-rf", "--simple", tree_ });
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.lines(), 2) << outcome.errors;
    for (const auto& [name, mode] : folders) {
        EXPECT_EQ(fs::status(tree_ + name).permissions(), mode);
        fs::permissions(tree_ + name, fs::perms(0755));
        EXPECT_EQ(read(tree_ + name + "/file"), "precious");
    }
}

TEST_F(TWSrmTests, ImmutableFileIsKept)
{
    if (std::system(("chattr +i '" + canary_ + "' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "files cannot be made immutable here";
    const Outcome outcome = srm({ "-rf", base_ + "/outside" });
    EXPECT_EQ(std::system(("chattr -i '" + canary_ + "'").c_str()), 0);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, "srm: " + canary_ + ": Operation not permitted\n");
    EXPECT_EQ(read(canary_), "canary");
}

TEST_F(TWSrmTests, WhatIsMountedInsideIsNotEntered)
{
    fs::create_directory(tree_ + "/bound");
    write(tree_ + "/other", "x");
    const Outcome outcome = srm({ "-rf", "--simple", tree_ }, [this] {
        return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
            && mount((base_ + "/outside").c_str(), (tree_ + "/bound").c_str(), nullptr, MS_BIND, nullptr) == 0;
    });
    if (outcome.code == CannotPrepare)
        GTEST_SKIP() << "nothing can be mounted here";
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.lines(), 1) << outcome.errors;
    EXPECT_EQ(read(canary_), "canary");
    EXPECT_FALSE(isThere(tree_ + "/other"));
}
