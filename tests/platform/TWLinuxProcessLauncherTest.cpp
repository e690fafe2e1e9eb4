#include "platform/linux/TWLinuxProcessLauncher.h"

#include "builders/TWHostileTree.h"
#include "contracts/TWProcessLauncherContract.h"
#include "deletion/TWFileDeleteQueue.h"
#include "fakes/TWFakeMachine.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <sys/wait.h>

namespace {

using namespace std::chrono_literals;
using Kind = TWTermination::Kind;
using Arguments = std::vector<std::string>;

// The fake run loop waits for real descriptors.
class TWLinuxProcessLauncherTest : public testing::Test, protected TWFakeMachine {
protected:
    void start(const std::string& path, const Arguments& arguments)
    {
        ended.reset();
        int error = 0;
        const auto folder = fileSystem.holdFolder(root.path(), error);
        child = linuxLauncher->launch(path, arguments, *folder, [this](const TWTermination& termination) {
            EXPECT_FALSE(ended) << "the termination call came twice";
            ended = termination;
        });
        EXPECT_FALSE(ended) << "the termination call came within the launch";
    }
    void turnUntil(const std::function<bool()>& condition)
    {
        for (int turns = 0; !condition(); ++turns) {
            ASSERT_LT(turns, 20'000) << "waited for nothing";
            runLoop.turn(0ms);
            std::this_thread::sleep_for(1ms);
        }
    }
    TWTermination wait()
    {
        turnUntil([this] { return ended.has_value(); });
        return ended.value_or(TWTermination{ Kind::NotLaunched, -1, "never ended" });
    }
    TWTermination run(const std::string& path, const Arguments& arguments)
    {
        start(path, arguments);
        return wait();
    }
    static int inheritableDescriptors()
    {
        int count = 0;
        for (int descriptor = 0; descriptor < 1024; ++descriptor)
            count += (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0; // a closed one has all bits
        return count;
    }
    TWTermination runShell(const std::string& script) { return run("/bin/sh", { "-c", script }); }

    std::unique_ptr<TWLinuxProcessLauncher> linuxLauncher = std::make_unique<TWLinuxProcessLauncher>(runLoop);
    std::unique_ptr<TWChildProcess> child;
    std::optional<TWTermination> ended;
};

struct Launcher {
    TWFakeMachine& machine;
    TWLinuxProcessLauncher body{ machine.runLoop };
    TWProcessLauncher& launcher() { return body; }
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, TWProcessLauncherContract, Launcher);

TEST_F(TWLinuxProcessLauncherTest, ArgumentsArriveAsTheSameBytes)
{
    const Arguments awkward{ "", "a b", "$(id) `id` ;&|", "\xFF\xC3(", "new\nline", "'\"\\", "*", "-rf", "%s",
        std::string(100'000, 'x') };
    std::string expected;
    for (const auto& argument : awkward)
        expected += "<" + argument + ">";
    Arguments arguments{ "-c", "out=$1; shift; printf '<%s>' \"$@\" > \"$out\"", "sh", root.path("out") };
    arguments.insert(arguments.end(), awkward.begin(), awkward.end());
    EXPECT_EQ(run("/bin/sh", arguments).code, 0);
    EXPECT_EQ(root.read("out"), expected);
}

TEST_F(TWLinuxProcessLauncherTest, TellsHowAChildEnded)
{
    const auto exited = runShell("echo said; echo complained >&2; exit 3");
    EXPECT_EQ(exited.kind, Kind::Exited);
    EXPECT_EQ(exited.code, 3);
    EXPECT_EQ(exited.output, "said\ncomplained\n");
    // One that talks a lot is neither blocked nor remembered.
    EXPECT_EQ(runShell("head -c 10000000 /dev/zero | tr '\\0' e >&2").output, std::string(4096, 'e'));
    const auto signalled = runShell("kill -SEGV $$");
    EXPECT_EQ(signalled.kind, Kind::Signalled);
    EXPECT_EQ(signalled.code, SIGSEGV);
    EXPECT_EQ(run(root.write("not executable", "x"), { "-rf" }).code, EACCES);
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
    const int inheritableBefore = inheritableDescriptors();
    start("/bin/sleep", { "10" });
    EXPECT_EQ(inheritableDescriptors(), inheritableBefore) << "another child would hold them open";
    const auto sleeper = std::move(child);
    const auto world = runShell("/usr/bin/env; readlink /proc/self/fd/0; grep -E 'Sig(Blk|Ign)' /proc/self/status");
    std::signal(SIGPIPE, oldPipe);
    sigprocmask(SIG_SETMASK, &before, nullptr);
    unsetenv("LC_ALL");
    EXPECT_NE(world.output.find("LC_ALL=C\n"), std::string::npos);
    EXPECT_EQ(world.output.find("SECRET"), std::string::npos);
    EXPECT_NE(world.output.find("/dev/null\nSigBlk:\t0000000000000000\n"), std::string::npos) << world.output;
    const auto ignored = std::stoull(world.output.substr(world.output.find("SigIgn:") + 7), nullptr, 16);
    EXPECT_EQ(ignored & 0x7FFF'FFFF, 0U) << "of the signals that a program can set";
}

TEST_F(TWLinuxProcessLauncherTest, ADestroyedChildIsEndedAndCollected)
{
    start("/bin/sleep", { "100" });
    child.reset();
    start(root.path("missing"), {});
    child.reset();
    // No child is left, not even a dead one, once the sleeper has been collected.
    turnUntil([] { return waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) != 0; });
    EXPECT_FALSE(ended);
}

TEST_F(TWLinuxProcessLauncherTest, ADeafChildIsKilledOnceNobodyWaitsForIt)
{
    for (const bool launcherGoes : { false, true }) {
        start("/bin/sh", { "-c", "trap '' TERM; echo $$ > pid; mv pid ready; while :; do sleep 0.01; done" });
        turnUntil([this] { return root.exists("ready"); });
        const auto process = std::stoi(root.read("ready"));
        child.reset();
        if (launcherGoes)
            linuxLauncher.reset();
        runLoop.advance(101ms); // nothing moves the clock once the launcher has gone
        turnUntil([process] { return kill(process, 0) != 0; });
        std::filesystem::remove(root.path("ready"));
    }
    EXPECT_FALSE(ended);
}

// The whole way, with the real tool: everything goes but what the user may not delete, and that is named.
TEST_F(TWLinuxProcessLauncherTest, AQueueDeletesTheHostileTreeAndNothingElse)
{
    struct Recorder final : TWFileDeleteQueueDelegate {
        void fileDeleteQueueProgressed(const std::string& message) override { lines.push_back(message); }
        void fileDeleteQueueVerified(bool nothingLeft) override { verdict = nothingLeft; }
        std::vector<std::string> lines;
        std::optional<bool> verdict;
    } recorder;
    const TWHostileTree tree(root);
    const auto canary = tree.canaryDigest();
    EXPECT_EQ(tree.paths().size(), 18U);

    places.rmOptions = { "--one-file-system" };
    TWFileDeleteQueue queue({ runLoop, *linuxLauncher, fileSystem, guard, places });
    queue.setDelegate(&recorder);
    for (const auto& path : tree.paths())
        queue.addFile(target(TWPath::withoutTrailingSlashes(path)));
    queue.deleteFiles(TWAuthorization::No);
    turnUntil([&] { return !queue.running(); });
    EXPECT_EQ(tree.canaryDigest(), canary);

    std::vector<std::string> expected;
    for (const auto& path : tree.paths())
        expected.push_back("Could not delete " + path);
    EXPECT_LE(expected.size(), geteuid() == 0 ? 0U : 2U) << "only the two locked folders may resist";
    recorder.lines.clear();
    queue.verify();
    turnUntil([&] { return recorder.verdict.has_value(); });
    EXPECT_EQ(recorder.verdict, expected.empty());
    std::erase_if(recorder.lines, [](const auto& line) { return line.starts_with("The deletion tool said: "); });
    EXPECT_EQ(recorder.lines, expected);
}
