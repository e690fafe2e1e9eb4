#include "builders/TWHostileTree.h"
#include "builders/TWProgram.h"

#include <gtest/gtest.h>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <map>
#include <set>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>

namespace fs = std::filesystem;

namespace {

constexpr uid_t Nobody = 65534;
constexpr char Secret[] = "precious";

using Call = decltype(__ptrace_syscall_info::entry);

class TWSrmTests : public testing::Test {
protected:
    // Runs the helper in the throwaway folder. prepare runs in the child before it.
    TWProgramResult srm(
        TWProgram::Words arguments, const std::function<bool()>& prepare = [] { return true; }) const
    {
        return program(std::move(arguments), prepare).wait();
    }

    TWProgram program(TWProgram::Words arguments, const std::function<bool()>& prepare) const
    {
        arguments.insert(arguments.begin(), TIDEWELL_LIBEXEC "/srm");
        // The leak check does not work in a traced process.
        return TWProgram(root, arguments, { "ASAN_OPTIONS=detect_leaks=0" },
            [&] { return chdir(root.path().c_str()) == 0 && prepare(); });
    }

    // Shows every system call of the helper, with the helper stopped just before it.
    TWProgramResult traced(const TWProgram::Words& arguments, const std::function<void(pid_t, const Call&)>& show) const
    {
        const TWProgram traced = program(arguments, [] { return ptrace(PTRACE_TRACEME) == 0; });
        constexpr int CallStop = SIGTRAP | 0x80;
        for (bool started = false;; started = true) {
            siginfo_t state{};
            waitid(P_PID, traced.process(), &state, WEXITED | WSTOPPED | WNOWAIT);
            if (state.si_code != CLD_TRAPPED && state.si_code != CLD_STOPPED)
                return traced.wait();
            waitpid(traced.process(), nullptr, 0);
            if (!started)
                ptrace(PTRACE_SETOPTIONS, traced.process(), 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
            __ptrace_syscall_info info{};
            if (state.si_status == CallStop)
                ptrace(PTRACE_GET_SYSCALL_INFO, traced.process(), sizeof info, &info);
            if (info.op == PTRACE_SYSCALL_INFO_ENTRY)
                show(traced.process(), info.entry);
            const int signal = started && state.si_status != CallStop ? state.si_status : 0;
            ptrace(PTRACE_SYSCALL, traced.process(), 0, signal);
        }
    }

    // Modes do not stop root, so the helper then runs as someone to whom everything in the throwaway folder is given.
    TWProgramResult srmWithoutPrivileges(const TWProgram::Words& arguments, rlim_t largestFile = RLIM_INFINITY) const
    {
        const bool isRoot = geteuid() == 0;
        EXPECT_TRUE(!isRoot || run("chown -R " + std::to_string(Nobody) + " ."));
        return srm(
            arguments, [=] { return TWProgram::limit(RLIMIT_FSIZE, largestFile) && (!isRoot || setuid(Nobody) == 0); });
    }

    bool run(const std::string& command) const
    {
        return std::system(("cd " + root.path() + " && " + command + " 2>/dev/null").c_str()) == 0;
    }
    static auto lines(const TWProgramResult& result) { return std::count(result.err.begin(), result.err.end(), '\n'); }
    std::string canary() const { return root.read("outside/canary"); }

    // /tmp may live in memory, where attributes and holes are missing.
    TWTemporaryFolder root{ "/var/tmp/tidewell-srm-XXXXXX" };
    const std::string tree = root.folder("tree");
    const std::string canaryPath = root.write("outside/canary", "canary");
};

}

TEST_F(TWSrmTests, AnyOtherUseIsRefusedInOneLine)
{
    root.link("way", "outside");
    const std::vector<TWProgram::Words> uses = { {}, { "./outside" }, { "-rf" }, { "-r", "./outside" },
        { "--simple", "-rf", "./outside" }, { "-rf", "--strong", "./outside" },
        { "-rf", "--simple", "./outside", "./outside" }, { "-rf", "" }, { "-rf", "/" }, { "-rf", "." }, { "-rf", ".." },
        { "-rf", "./" }, { "-rf", "./." }, { "-rf", "./.." }, { "-rf", ".//outside" }, { "-rf", "./outside/" },
        { "-rf", "./way/canary" }, { "-rf", "outside" }, { "-rf", root.path("outside") } };
    // Should a refusal ever fail, the helper must not be able to do harm: with a single descriptor it enters no folder.
    const auto disarm = [] { return close_range(3, ~0U, 0) == 0 && TWProgram::limit(RLIMIT_NOFILE, 4); };
    ASSERT_EQ(srm({ "-rf", "./outside" }, disarm).status, 1);
    for (const auto& arguments : uses) {
        const auto outcome = srm(arguments, disarm);
        EXPECT_EQ(outcome.status, 2) << testing::PrintToString(arguments);
        EXPECT_TRUE(outcome.err.starts_with("srm: arguments: use as: ") && lines(outcome) == 1) << outcome.err;
    }
    EXPECT_EQ(canary(), "canary");
    EXPECT_EQ(srm({ "-rf", "./none" }).status, 0);
}

TEST_F(TWSrmTests, HostileTreeGoesWithFewDescriptorsAndNothingOutsideIsTouched)
{
    const TWHostileTree hostile(root);
    const auto canaries = hostile.canaryDigest();
    fs::rename(root.path("hostile/hard-link"), root.path("hostile/second\nname"));
    for (const char* locked : { "hostile/unreadable", "hostile/read-only" })
        fs::permissions(root.path(locked), fs::perms(0700));
    const auto result = srm({ "-rf", "--medium", "./hostile" }, [] { return TWProgram::limit(RLIMIT_NOFILE, 64); });
    EXPECT_EQ(result.status, 0);
    EXPECT_FALSE(root.exists("hostile"));
    EXPECT_TRUE(result.err.starts_with("srm: note: ./hostile/second\\x0aname: the file has several names"));
    EXPECT_EQ(lines(result), 1) << result.err;

    root.link("link", root.path("canary"));
    EXPECT_EQ(srm({ "-rf", "./link" }).status, 0);
    EXPECT_FALSE(root.exists("link"));
    EXPECT_EQ(hostile.canaryDigest(), canaries);
    EXPECT_EQ(fs::hard_link_count(root.path("canary/file")), 1u);
}

TEST_F(TWSrmTests, ProtectedFoldersAreKeptUnspoiledAndNamed)
{
    const std::map<std::string, fs::perms> folders
        = { { "tree/closed", fs::perms(0) }, { "tree/read only", fs::perms(0555) } };
    for (const auto& [name, mode] : folders) {
        root.write(name + "/file", Secret);
        fs::permissions(root.path(name), mode);
    }
    // A file with all its names in the tree is overwritten in the end, so there is nothing to say.
    fs::create_hard_link(root.write("tree/folder/one", Secret), tree + "/two");
    const auto result = srmWithoutPrivileges({ "-rf", "--simple", "./tree" });
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("srm: ./tree/closed: Permission denied\n"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("srm: ./tree/read only/file: Permission denied\n"), std::string::npos) << result.err;
    EXPECT_EQ(lines(result), 2) << result.err;
    for (const auto& [name, mode] : folders) {
        EXPECT_EQ(fs::status(root.path(name)).permissions(), mode);
        fs::permissions(root.path(name), fs::perms(0755));
        EXPECT_EQ(root.read(name + "/file"), Secret);
    }
}

class TWTracedSrmTests : public TWSrmTests {
protected:
    void SetUp() override
    {
        if (traced({}, [](pid_t, const Call&) {}).status == TWProgram::CannotPrepare)
            GTEST_SKIP() << "no process can be traced here";
    }
};

TEST_F(TWTracedSrmTests, EachPassIsWrittenAsAWholeAndFlushed)
{
    constexpr std::size_t Size = 512 * 1024;
    const std::pair<TWProgram::Words, std::size_t> levels[] = { { { "-rf", "--simple", "./file" }, 1 },
        { { "-rf", "--medium", "./file" }, 7 }, { { "-rf", "./file" }, 35 } };
    for (const auto& [arguments, passes] : levels) {
        root.write("file", std::string(Size - 100, 'x'));
        std::vector<std::size_t> flushed;
        std::size_t written = 0;
        const auto outcome = traced(arguments, [&](pid_t, const Call& call) {
            if (call.nr == SYS_pwrite64)
                written += call.args[2];
            if (call.nr == SYS_fdatasync)
                flushed.push_back(std::exchange(written, 0));
        });
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(flushed, std::vector<std::size_t>(passes, Size));
    }
}

TEST_F(TWTracedSrmTests, WhatOtherProgramsDoMeanwhileIsOverwrittenOrKeptAndHolesStayHoles)
{
    constexpr off_t Size = 9000;
    constexpr off_t Hole = 1 << 20;
    struct Case {
        const char* what;
        long first, call; // another program changes the file before this call, once the first one was made
        bool repeatedly;
        std::function<void(int file)> change;
        const char* reason; // why the file is kept, if it is
    };
    constexpr char Replaced[] = "replaced by something else meanwhile, kept";
    const auto writeAt = [](off_t at) { return [at](int file) { EXPECT_EQ(pwrite(file, Secret, 8, at), 8); }; };
    const auto append = [](int file) { EXPECT_EQ(pwrite(file, Secret, 8, lseek(file, 0, SEEK_END)), 8); };
    const auto replace = [this](int) { fs::rename(root.write("other", Secret), root.path("file")); };
    const Case cases[] = {
        { "written on at the old end", SYS_pwrite64, SYS_fdatasync, false, writeAt(Size + Hole), nullptr },
        { "grown with a hole", SYS_pwrite64, SYS_fdatasync, false, writeAt(3 * Hole), nullptr },
        { "hole filled", SYS_pwrite64, SYS_fdatasync, false, writeAt(Hole / 4), nullptr },
        { "written on and on", SYS_pwrite64, SYS_fdatasync, true, append, "another program keeps writing to it, kept" },
        { "written on late", SYS_pwrite64, SYS_close, false, append,
            "changed by another program while it was being removed, kept" },
        { "shortened", SYS_pwrite64, SYS_fdatasync, false, [](int file) { EXPECT_EQ(ftruncate(file, 10), 0); },
            "another program shortened it meanwhile, kept; what was cut off was perhaps not overwritten" },
        { "replaced before it is opened", SYS_unlinkat, SYS_openat, false, replace, Replaced },
        { "replaced before it is removed", SYS_pwrite64, SYS_close, false, replace, Replaced },
    };
    for (const Case& change : cases) {
        root.write("file", Secret);
        const int file = open(root.path("file").c_str(), O_RDWR | O_CLOEXEC);
        for (off_t at = 0; at < Size; at += 8)
            EXPECT_EQ(pwrite(file, Secret, 8, Hole + at), 8);
        bool begun = false, changed = false;
        const auto outcome = traced({ "-rf", "--simple", "./file" }, [&](pid_t, const Call& call) {
            begun |= long(call.nr) == change.first;
            if (begun && long(call.nr) == change.call && (change.repeatedly || !std::exchange(changed, true)))
                change.change(file);
        });
        EXPECT_EQ(outcome.status, change.reason ? 1 : 0) << change.what;
        EXPECT_EQ(outcome.err, change.reason ? "srm: ./file: " + std::string(change.reason) + "\n" : "") << change.what;
        EXPECT_EQ(root.exists("file"), change.reason != nullptr) << change.what;
        EXPECT_TRUE(change.reason != Replaced || root.read("file") == Secret) << change.what;
        std::string left(lseek(file, 0, SEEK_END), ' ');
        EXPECT_EQ(pread(file, left.data(), left.size(), 0), ssize_t(left.size()));
        EXPECT_TRUE(change.reason || left.find(Secret) == left.npos) << change.what;
        EXPECT_TRUE(change.reason || left.substr(Hole / 2, 4096) == std::string(4096, '\0')) << change.what;
        close(file);
        fs::remove(root.path("file"));
    }
}

TEST_F(TWTracedSrmTests, WhatIsMovedAwayMeanwhileIsNamed)
{
    // Moved before the second call, when the names are read or the first file is overwritten.
    const auto said = [this](long awaited, const std::string& moved) {
        for (const auto* name : { "tree/file", "tree/folder/one", "tree/folder/two" })
            root.write(name, Secret);
        int calls = 0;
        const auto outcome = traced({ "-rf", "--simple", "./tree" }, [&](pid_t, const Call& call) {
            if (long(call.nr) == awaited && ++calls == 2)
                fs::rename(root.path(moved), root.path("away " + std::to_string(awaited)));
        });
        return std::to_string(outcome.status) + " " + outcome.err;
    };
    EXPECT_EQ(said(SYS_getdents64, "tree/file"), "0 srm: note: ./tree/file: was gone before it could be overwritten\n");
    EXPECT_EQ(said(SYS_fdatasync, "tree/folder"), "1 srm: ./tree/folder: moved meanwhile, kept\n");
}

TEST_F(TWTracedSrmTests, EndedAtAnySystemCallItLeavesOldNamesOnlyAndClaimsNoSuccess)
{
    const std::set<std::uint64_t> moments = { SYS_getdents64, SYS_statx, SYS_lseek, SYS_fcntl, SYS_pwrite64,
        SYS_fdatasync, SYS_fadvise64, SYS_unlinkat, SYS_fsync, SYS_rt_sigpending };
    const std::map<std::string, std::string> files
        = { { "one", Secret }, { "two", "" }, { "three", "" }, { "four", "" } };
    for (const int signal : { SIGTERM, SIGKILL }) {
        bool reached = true;
        for (int moment = 1; reached; ++moment) {
            for (const auto& [name, text] : files)
                root.write("tree/" + name, text);
            int seen = 0, steps = 0; // steps: blocks written and names removed after the signal
            const auto outcome = traced({ "-rf", "--medium", "./tree" }, [&](pid_t process, const Call& call) {
                seen += moments.contains(call.nr);
                steps += seen >= moment && (call.nr == SYS_pwrite64 || (call.nr == SYS_unlinkat && call.args[2] == 0));
                if (seen == moment && moments.contains(call.nr))
                    kill(process, signal);
            });
            reached = seen >= moment;
            ASSERT_TRUE(outcome.status == 0 ? !root.exists("tree") : reached && outcome.status == 1000 + signal)
                << moment << " " << outcome.status << " " << outcome.err;
            ASSERT_LE(steps, 2) << "goes on after moment " << moment;
            for (const auto& entry : fs::directory_iterator(root.folder("tree"))) {
                const auto file = files.find(entry.path().filename());
                ASSERT_TRUE(file != files.end() && entry.file_size() >= file->second.size()) << moment << entry;
            }
        }
    }
}

TEST_F(TWSrmTests, FileThatCannotBeOverwrittenToItsEndKeepsItsNameAndMode)
{
    constexpr std::size_t Limit = 64 * 1024;
    const auto file = root.write("tree/file", std::string(2 * Limit, 'x'));
    fs::permissions(file, fs::perms(0440));
    const auto outcome = srmWithoutPrivileges({ "-rf", "--medium", "./tree" }, Limit);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "srm: ./tree/file: File too large\n");
    const std::string left = root.read("tree/file");
    ASSERT_EQ(left.size(), 2 * Limit);
    EXPECT_LT(std::count(left.begin(), left.begin() + Limit, 'x'), 500); // one random byte in 256 is an x
    EXPECT_EQ(left.substr(Limit), std::string(Limit, 'x'));
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0440));
}

TEST_F(TWSrmTests, FailedFlushOrRemovalKeepsTheName)
{
    for (const unsigned call : { SYS_fdatasync, SYS_unlinkat }) {
        root.write("tree/file", Secret);
        sock_filter steps[] = { BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0), BPF_JUMP(BPF_JMP | BPF_JEQ, call, 0, 1),
            BPF_STMT(BPF_RET, SECCOMP_RET_ERRNO | EPERM), BPF_STMT(BPF_RET, SECCOMP_RET_ALLOW) };
        const sock_fprog filter = { std::size(steps), steps };
        const auto outcome = srm({ "-rf", "--simple", "./tree" }, [&filter] {
            return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
                && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
        });
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "srm: ./tree/file: Operation not permitted\n");
        EXPECT_EQ(root.read("tree/file") == Secret, call == SYS_unlinkat);
    }
}

TEST_F(TWSrmTests, WhatCouldNotBeRemovedIsNotSpoiled)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can make another user's files and set attributes";
    // A file that everybody may write, in a folder where everybody may delete only files of their own.
    root.write("tree/file", Secret);
    ASSERT_TRUE(run("chmod 755 . && chmod 1777 tree && chmod 666 tree/file"));
    auto outcome
        = srm({ "-rf", "--simple", "./file" }, [&] { return chdir(tree.c_str()) == 0 && setuid(Nobody) == 0; });
    EXPECT_EQ(outcome.err, "srm: ./file: Operation not permitted\n");
    EXPECT_EQ(root.read("tree/file"), Secret);

    for (const std::string attribute : { "a tree", "i tree", "a tree/file", "i tree/file" }) {
        if (!run("chattr +" + attribute))
            GTEST_SKIP() << "files cannot be made immutable here";
        outcome = srm({ "-rf", "--simple", "./tree" });
        EXPECT_TRUE(run("chattr -" + attribute));
        EXPECT_EQ(outcome.status, 1) << attribute;
        EXPECT_EQ(outcome.err, "srm: ./tree/file: Operation not permitted\n") << attribute;
        EXPECT_EQ(root.read("tree/file"), Secret) << attribute;
    }
}

TEST_F(TWSrmTests, WhatIsMountedInsideIsNotEntered)
{
    const auto bound = root.folder("tree/bound");
    root.write("tree/other", "x");
    const auto outcome
        = srm({ "-rf", "--simple", "./tree" }, [&] { return TWProgram::mountPrivately(root.path("outside"), bound); });
    if (outcome.status == TWProgram::CannotPrepare)
        GTEST_SKIP() << "nothing can be mounted here";
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(lines(outcome), 1) << outcome.err;
    EXPECT_EQ(canary(), "canary");
    EXPECT_FALSE(root.exists("tree/other"));
}
