#include "platform/linux/TWLinuxProcessLauncher.h"

#include "contracts/TWProcessLauncherContract.h"
#include "fakes/TWFakeMachine.h"
#include "platform/TWHost.h"
#include "platform/posix/TWPosixLocks.h"

#include <csignal>

namespace {

using Kind = TWTermination::Kind;

class TWLinuxProcessLauncherTest : public testing::Test, protected TWFakeMachine {
protected:
    void start(const std::string& path, const Lines& arguments)
    {
        ended.reset();
        int error = 0;
        const auto folder = fileSystem.holdFolder(root.path(), error);
        child = linuxLauncher->launch(
            path, arguments, *folder, [this](const TWTermination& termination) { ended = termination; });
    }
    TWTermination run(const std::string& path, const Lines& arguments)
    {
        start(path, arguments);
        runLoop.runUntil([this] { return ended.has_value(); });
        return ended.value_or(TWTermination{ Kind::NotLaunched, -1, "never ended" });
    }
    TWTermination runShell(const std::string& script) { return run("/bin/sh", { "-c", script }); }

    std::unique_ptr<TWLinuxProcessLauncher> linuxLauncher = std::make_unique<TWLinuxProcessLauncher>(runLoop);
    std::unique_ptr<TWChildProcess> child;
    std::optional<TWTermination> ended;
};

struct LinuxLauncher {
    TWFakeMachine& machine;
    TWLinuxProcessLauncher body{ machine.runLoop };
    TWProcessLauncher& launcher() { return body; }
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, TWProcessLauncherContract, LinuxLauncher);

TEST_F(TWLinuxProcessLauncherTest, TellsHowAChildEnded)
{
    const auto oldChild = std::signal(SIGCHLD, SIG_IGN); // as the parent may have it
    TWMakeHost()->prepareProcess();
    const auto exited = runShell("echo said; echo complained >&2; exit 3");
    EXPECT_EQ(exited.kind, Kind::Exited);
    EXPECT_EQ(exited.code, 3);
    EXPECT_EQ(exited.output, "said\ncomplained\n");
    // One that talks a lot is neither blocked nor remembered.
    EXPECT_EQ(runShell("head -c 10000000 /dev/zero | tr '\\0' e >&2").output, std::string(4096, 'e'));
    EXPECT_EQ(run(root.write("not executable", "x"), { "-rf" }).code, EACCES);
    std::signal(SIGCHLD, oldChild);
}

// So the lock stays taken while a tool works, even if Tidewell was killed.
TEST_F(TWLinuxProcessLauncherTest, AChildHoldsTheSharedLock)
{
    TWPosixLocks realLocks;
    std::shared_ptr<TWHeldLock> lock = realLocks.tryLock(root.path("lock")).lock;
    linuxLauncher->shareLock(lock);
    start("/bin/sleep", { "100" });
    lock.reset();
    EXPECT_TRUE(realLocks.tryLock(root.path("lock")).heldByAnother);
    child->kill();
    runLoop.runUntil([this] { return ended.has_value(); });
    EXPECT_TRUE(realLocks.tryLock(root.path("lock")).lock);
}

TEST_F(TWLinuxProcessLauncherTest, AChildGetsACleanWorld)
{
    setenv("TIDEWELL_TEST_SECRET", "x", 1);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    sigset_t signals;
    sigset_t before;
    sigfillset(&signals);
    sigprocmask(SIG_BLOCK, &signals, &before);
    const auto oldPipe = std::signal(SIGPIPE, SIG_IGN);
    const auto world = runShell("/usr/bin/env; readlink /proc/self/fd/0; grep -E 'Sig(Blk|Ign)' /proc/self/status; "
                                "read -r a b c d group e < /proc/$$/stat; test $group = $$ && echo own group");
    std::signal(SIGPIPE, oldPipe);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    unsetenv("LC_ALL");
    EXPECT_NE(world.output.find("LC_ALL=C\n"), std::string::npos);
    EXPECT_EQ(world.output.find("SECRET"), std::string::npos);
    EXPECT_TRUE(world.output.ends_with("own group\n")) << "so that Ctrl+C does not reach it";
    EXPECT_NE(world.output.find("/dev/null\nSigBlk:\t0000000000000000\n"), std::string::npos) << world.output;
    const auto ignored = std::stoull(world.output.substr(world.output.find("SigIgn:") + 7), nullptr, 16);
    EXPECT_EQ(ignored & 0x7FFF'FFFF, 0U) << "of the signals that a program can set";
}

TEST_F(TWLinuxProcessLauncherTest, ADestroyedChildIsEndedAndCollectedEvenIfItIsDeafOrTheLauncherGoes)
{
    for (const auto& [trap, launcherGoes] :
        { std::pair("", false), { "trap '' TERM; ", false }, { "trap '' TERM; ", true } }) {
        start("/bin/sh", { "-c", trap + std::string("echo $$ > pid; mv pid ready; while :; do sleep 0.01; done") });
        runLoop.runUntil([this] { return root.exists("ready"); });
        const auto process = std::stoi(root.read("ready"));
        child.reset();
        if (launcherGoes)
            linuxLauncher.reset();
        runLoop.advance(101ms); // nothing moves the clock once the launcher has gone
        runLoop.runUntil([process] { return kill(process, 0) != 0; }); // a dead one that nobody collects is still there
        std::filesystem::remove(root.path("ready"));
    }
    EXPECT_FALSE(ended);
}
