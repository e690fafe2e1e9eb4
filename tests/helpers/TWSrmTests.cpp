#include <gtest/gtest.h>

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <grp.h>
#include <iterator>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int CannotPrepare = 77;
constexpr uid_t Nobody = 65534;

struct Outcome {
    int code = -1;
    std::string errors;
    long blocksWritten = 0; // of 512 bytes; pages made dirty again after a flush count again
};

class TWSrmTests : public testing::Test {
protected:
    // Not below /tmp, which may live in memory: there nothing counts as written.
    void SetUp() override
    {
        ASSERT_NE(mkdtemp(base_.data()), nullptr);
        tree_ = base_ + "/tree";
        canary_ = base_ + "/outside/canary";
        fs::create_directory(tree_);
        fs::create_directory(base_ + "/outside");
        write(canary_, "canary");
    }
    void TearDown() override { fs::remove_all(base_); }

    static void write(const std::string& path, const std::string& bytes)
    {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        ASSERT_GE(file, 0) << path;
        ASSERT_EQ(::write(file, bytes.data(), bytes.size()), ssize_t(bytes.size()));
        ASSERT_EQ(fsync(file), 0);
        close(file);
    }
    static std::string read(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return { std::istreambuf_iterator<char>(file), {} };
    }
    bool isThere(const std::string& path) const { return fs::exists(fs::symlink_status(path)); }

    // prepare runs in the child before the helper; false ends the child with CannotPrepare.
    static Outcome srm(
        std::vector<std::string> arguments, const std::function<bool()>& prepare = [] { return true; })
    {
        arguments.insert(arguments.begin(), "srm");
        std::vector<char*> pointers;
        for (std::string& argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        int errors[2];
        if (pipe2(errors, O_CLOEXEC) != 0)
            return {};
        const pid_t child = fork();
        if (child == 0) {
            dup2(errors[1], STDERR_FILENO);
            if (prepare())
                execv(TIDEWELL_LIBEXEC "/srm", pointers.data());
            _exit(CannotPrepare);
        }
        close(errors[1]);
        Outcome outcome;
        char buffer[4096];
        for (ssize_t length; (length = ::read(errors[0], buffer, sizeof buffer)) > 0;)
            outcome.errors.append(buffer, size_t(length));
        close(errors[0]);
        int status = 0;
        rusage usage = {};
        wait4(child, &status, 0, &usage);
        outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        outcome.blocksWritten = usage.ru_oublock;
        return outcome;
    }

    // Modes do not stop root, so the helper then runs as someone to whom everything in the throwaway folder is given.
    Outcome srmWithoutPrivileges(const std::vector<std::string>& arguments, rlim_t largestFile = RLIM_INFINITY)
    {
        const bool root = geteuid() == 0;
        for (const auto& entry : fs::recursive_directory_iterator(base_))
            EXPECT_TRUE(!root || lchown(entry.path().c_str(), Nobody, Nobody) == 0);
        EXPECT_TRUE(!root || chown(base_.c_str(), Nobody, Nobody) == 0);
        return srm(arguments, [=] {
            const rlimit limit = { largestFile, largestFile };
            return setrlimit(RLIMIT_FSIZE, &limit) == 0
                && (!root || (setgroups(0, nullptr) == 0 && setgid(Nobody) == 0 && setuid(Nobody) == 0));
        });
    }

    std::string base_ = "/var/tmp/tidewell-srm-XXXXXX";
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
    const auto disarm = [] {
        const rlimit limit = { 4, 4 };
        return close_range(3, ~0U, 0) == 0 && setrlimit(RLIMIT_NOFILE, &limit) == 0;
    };
    write(tree_ + "/armed", "");
    ASSERT_EQ(srm({ "-rf", tree_ }, disarm).code, 1);
    ASSERT_TRUE(isThere(tree_ + "/armed"));
    for (const auto& arguments : uses) {
        const Outcome outcome = srm(arguments, disarm);
        EXPECT_EQ(outcome.code, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    }
    EXPECT_EQ(read(canary_), "canary");
    const Outcome missing = srm({ "-rf", tree_ + "/none/of/it" });
    EXPECT_EQ(missing.code, 0);
    EXPECT_EQ(missing.errors, "");
}

TEST_F(TWSrmTests, HostileTreeGoesAndNothingOutsideIsTouched)
{
    const std::string names[] = { "\xff\xfe invalid", "line\nbreak", "-rf", " ", "...", std::string(255, 'n'), "*" };
    for (const std::string& name : names) {
        write(tree_ + "/" + name, std::string(5000, 'x'));
        fs::create_directory(tree_ + "/folder" + name.substr(0, 200));
        write(tree_ + "/folder" + name.substr(0, 200) + "/" + name, "");
    }
    fs::create_symlink(canary_, tree_ + "/to file");
    fs::create_symlink(base_ + "/outside", tree_ + "/to folder");
    fs::create_symlink("nowhere", tree_ + "/dangling");
    fs::create_symlink(".", tree_ + "/loop");
    fs::create_hard_link(canary_, tree_ + "/second\nname");
    fs::create_directory(tree_ + "/empty");
    ASSERT_EQ(mkfifo((tree_ + "/pipe").c_str(), 0600), 0);
    sockaddr_un address = { AF_UNIX, "\0" };
    (tree_ + "/socket").copy(address.sun_path, sizeof address.sun_path - 1);
    const int server = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(server, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    close(server);

    const Outcome outcome = srm({ "-rf", "--medium", tree_ + "//" });
    EXPECT_EQ(outcome.code, 0);
    EXPECT_FALSE(isThere(tree_));
    EXPECT_TRUE(outcome.errors.starts_with("srm: " + tree_ + "/second\\x0aname: the file has several names"))
        << outcome.errors;
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;

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
    const Outcome outcome = srm({ "-rf", "--simple", tree_ }, [] {
        const rlimit limit = { 64, 64 };
        return setrlimit(RLIMIT_NOFILE, &limit) == 0;
    });
    EXPECT_EQ(outcome.code, 0) << outcome.errors.substr(0, 200);
    EXPECT_FALSE(isThere(tree_));
}

TEST_F(TWSrmTests, EachPassReachesTheDiskAndHolesAreLeftOut)
{
    constexpr long Blocks = 1024; // 512 KiB
    constexpr long Around = 200; // the folder's blocks and the system's own
    const std::vector<std::pair<std::vector<std::string>, long>> levels
        = { { { "-rf", "--simple" }, 1 }, { { "-rf", "--medium" }, 7 }, { { "-rf" }, 35 } };
    for (const auto& [options, passes] : levels) {
        write(tree_ + "/file", std::string(Blocks * 512 - 100, 'x'));
        std::vector<std::string> arguments = options;
        arguments.push_back(tree_ + "/file");
        const Outcome outcome = srm(arguments);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_GE(outcome.blocksWritten, passes * Blocks);
        EXPECT_LE(outcome.blocksWritten, passes * Blocks + Around);
    }
    write(tree_ + "/sparse", std::string(1024, 'x'));
    fs::resize_file(tree_ + "/sparse", 8 << 20);
    EXPECT_LE(srm({ "-rf", "--simple", tree_ + "/sparse" }).blocksWritten, Around);
    EXPECT_FALSE(isThere(tree_ + "/sparse"));
}

TEST_F(TWSrmTests, FileThatCannotBeOverwrittenToItsEndKeepsItsNameAndMode)
{
    constexpr std::size_t Limit = 64 * 1024;
    const std::string file = tree_ + "/folder/file";
    fs::create_directory(tree_ + "/folder");
    write(file, std::string(2 * Limit, 'x'));
    write(tree_ + "/folder/sibling", "x");
    ASSERT_EQ(chmod(file.c_str(), 0440), 0);
    const Outcome outcome = srmWithoutPrivileges({ "-rf", "--medium", tree_ }, Limit);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, "srm: " + file + ": File too large\n");
    EXPECT_FALSE(isThere(tree_ + "/folder/sibling"));
    const std::string left = read(file);
    ASSERT_EQ(left.size(), 2 * Limit);
    // One byte in 256 of random ones is an x.
    EXPECT_LT(std::count(left.begin(), left.begin() + Limit, 'x'), 500);
    EXPECT_EQ(left.substr(Limit), std::string(Limit, 'x'));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0440));

    EXPECT_EQ(srmWithoutPrivileges({ "-rf", tree_ }).code, 0);
    EXPECT_FALSE(isThere(tree_));
}

TEST_F(TWSrmTests, ProtectedFoldersAreKeptUnspoiled)
{
    for (const std::string name : { "/closed", "/read only" }) {
        fs::create_directory(tree_ + name);
        write(tree_ + name + "/file", "precious");
    }
    fs::create_directory(tree_ + "/closed and empty");
    write(tree_ + "/other", "x");
    chmod((tree_ + "/closed").c_str(), 0);
    chmod((tree_ + "/closed and empty").c_str(), 0);
    chmod((tree_ + "/read only").c_str(), 0555);
    const Outcome outcome = srmWithoutPrivileges({ "-rf", "--simple", tree_ });
    chmod((tree_ + "/closed").c_str(), 0755);
    chmod((tree_ + "/read only").c_str(), 0755);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 2) << outcome.errors;
    EXPECT_EQ(read(tree_ + "/closed/file"), "precious");
    EXPECT_EQ(read(tree_ + "/read only/file"), "precious");
    EXPECT_EQ(std::distance(fs::directory_iterator(tree_), {}), 2);
}

TEST_F(TWSrmTests, ImmutableFileIsKept)
{
    const std::string file = tree_ + "/folder/file";
    fs::create_directory(tree_ + "/folder");
    write(file, "precious");
    if (std::system(("chattr +i '" + file + "' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "files cannot be made immutable here";
    const Outcome outcome = srm({ "-rf", tree_ });
    EXPECT_EQ(std::system(("chattr -i '" + file + "'").c_str()), 0);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, "srm: " + file + ": Operation not permitted\n");
    EXPECT_EQ(read(file), "precious");
}

TEST_F(TWSrmTests, WhatIsMountedInsideIsNotEntered)
{
    fs::create_directory(tree_ + "/bound");
    fs::create_directory(tree_ + "/memory");
    write(tree_ + "/other", "x");
    const Outcome outcome = srm({ "-rf", "--simple", tree_ }, [this] {
        return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
            && mount((base_ + "/outside").c_str(), (tree_ + "/bound").c_str(), nullptr, MS_BIND, nullptr) == 0
            && mount("none", (tree_ + "/memory").c_str(), "tmpfs", 0, nullptr) == 0;
    });
    if (outcome.code == CannotPrepare)
        GTEST_SKIP() << "nothing can be mounted here";
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 2) << outcome.errors;
    EXPECT_EQ(read(canary_), "canary");
    EXPECT_TRUE(isThere(tree_ + "/bound"));
    EXPECT_FALSE(isThere(tree_ + "/other"));
}
