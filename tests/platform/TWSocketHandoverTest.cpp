#include "platform/posix/TWSocketHandover.h"

#include "fakes/TWFakeMachine.h"
#include "platform/linux/TWLinuxPeer.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <future>

namespace {

constexpr int NoWindow = -1;

// A window in this thread; commands in threads of their own.
class TWSocketHandoverTest : public testing::Test, protected TWFakeMachine {
protected:
    using End = std::shared_ptr<TWSocketHandover>;
    using Answer = std::future<TWCommandResult>;

    End end(const std::string& folder, bool (*peerIsThisUser)(int) = TWLinuxPeerIsThisUser)
    {
        std::filesystem::create_directories(root.path(folder));
        return std::make_shared<TWSocketHandover>(
            TWSocketHandover::Setup{ fileSystem, root.path(folder), "", run, peerIsThisUser, patience });
    }
    bool listen(const End& window)
    {
        return window->listen(runLoop, [this](const Lines& words, const std::string& folder) {
            carriedOut.push_back(words);
            return TWCommandResult{ 7, "out " + folder, "err" };
        });
    }
    Answer send(const End& command, const Lines& words)
    {
        return std::async(std::launch::async, [=] {
            return command->handOver(words, "/work").value_or(TWCommandResult{ NoWindow, "", "" });
        });
    }
    TWCommandResult ask(const End& command, const Lines& words = { "x" }) { return wait(send(command, words)); }
    TWCommandResult wait(Answer answer)
    {
        runLoop.runUntil([&] { return answer.wait_for(0s) == std::future_status::ready; });
        return answer.get();
    }
    TWDescriptor connectWith(std::string_view bytes)
    {
        sockaddr_un address{ AF_UNIX, {} };
        root.path(Socket).copy(address.sun_path, sizeof address.sun_path - 1);
        TWDescriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(connect(made.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0) << strerror(errno);
        EXPECT_EQ(write(made.get(), bytes.data(), bytes.size()), bytes.size());
        return made;
    }
    static bool isClosed(const TWDescriptor& descriptor)
    {
        char byte;
        return recv(descriptor.get(), &byte, 1, MSG_DONTWAIT) == 0 || (errno != EAGAIN && errno != EWOULDBLOCK);
    }

    static constexpr auto Socket = "data/.window.socket";
    const std::string run = root.folder("run");
    std::chrono::milliseconds patience = 10s;
    std::vector<Lines> carriedOut;
};

}

TEST_F(TWSocketHandoverTest, WordsArriveAsTheSameBytesAndTheAnswerComesBack)
{
    const auto window = end("data");
    EXPECT_EQ(ask(end("data")).status, NoWindow);
    ASSERT_TRUE(listen(window));
    const Lines awkward{ "", "\xFF\n", std::string("nul\0nul", 7), "--json", std::string(300'000, 'x') };
    const auto answer = ask(end("data"), awkward);
    EXPECT_EQ(std::to_string(answer.status) + answer.out + answer.err, "7out /workerr");
    EXPECT_EQ(ask(end("data"), { std::string(2'000'000, 'x') }).status, TWStatus::NothingRun);
    EXPECT_EQ(carriedOut, std::vector<Lines>{ awkward });
    EXPECT_FALSE(listen(end("data"))) << "one window is there already";
}

TEST_F(TWSocketHandoverTest, BadClientsDisturbNobody)
{
    const auto window = end("data");
    ASSERT_TRUE(listen(window));
    const auto unfinished = connectWith({ "\0\1", 2 });
    connectWith({ "\0\0\1\0some", 8 }); // and goes away
    const std::string_view broken[]
        = { "GET / HTTP/1.1", { "\0\0\0\5\0\0\0\2x", 9 }, { "\0\0\0\0", 4 }, { "\0\x10\0\1", 4 } };
    for (const auto garbage : broken) {
        const auto client = connectWith(garbage);
        runLoop.runUntil([&] { return isClosed(client); });
    }
    auto first = send(end("data"), { "first" });
    EXPECT_EQ(ask(end("data")).status, 7);
    EXPECT_EQ(wait(std::move(first)).status, 7);
    EXPECT_EQ(carriedOut.size(), 2U);
    runLoop.advance(5s + 10ms);
    EXPECT_TRUE(isClosed(unfinished));
}

TEST_F(TWSocketHandoverTest, OnlyASocketThatNobodyElseCanHavePutThereIsUsed)
{
    {
        const auto real = end("real");
        ASSERT_TRUE(listen(real));
        root.link(Socket, root.path("real/.window.socket"));
        EXPECT_EQ(ask(end("data")).status, NoWindow) << "a link is no socket";
        const auto window = end("data");
        EXPECT_TRUE(listen(window)) << "in the runtime folder";
        EXPECT_EQ(ask(end("data")).status, 7);
        chmod(run.c_str(), 0770);
        EXPECT_EQ(ask(end("data")).status, NoWindow) << "others could put another socket there";
        EXPECT_FALSE(listen(end("data")));
    }
    EXPECT_TRUE(root.exists(Socket)) << "a link is nobody's socket to remove";
    EXPECT_TRUE(!root.exists("real/.window.socket") && std::filesystem::is_empty(run));
    carriedOut.clear();

    const auto nobody = [](int) { return false; };
    const auto window = end("own");
    ASSERT_TRUE(listen(window));
    EXPECT_EQ(ask(end("own", nobody)).status, NoWindow) << "another user listens";
    const auto suspicious = end("other", nobody);
    ASSERT_TRUE(listen(suspicious));
    EXPECT_EQ(ask(end("other")).status, TWStatus::Failure) << "another user asks";
    EXPECT_TRUE(carriedOut.empty());
}

TEST_F(TWSocketHandoverTest, ADeadWindowLeavesTheWayFree)
{
    const auto dying = fork();
    if (dying == 0)
        _exit(listen(end("data")) && root.exists(Socket) ? 0 : 1);
    int status = -1;
    waitpid(dying, &status, 0);
    ASSERT_EQ(status, 0);
    auto window = end("data");
    ASSERT_TRUE(listen(window));
    auto waiting = send(end("data"), { "x" }); // nobody turns the loop
    EXPECT_EQ(waiting.wait_for(50ms), std::future_status::timeout);
    window.reset();
    EXPECT_EQ(wait(std::move(waiting)).status, TWStatus::Failure);
}

// As one that is stopped: nobody turns the loop.
TEST_F(TWSocketHandoverTest, AWindowThatDoesNotAnswerIsNotWaitedForAndForgetsTheCommand)
{
    const auto window = end("data");
    ASSERT_TRUE(listen(window));
    patience = 5ms;
    for (int number = 0; number < 20; ++number) { // more than can wait for it
        const auto answer = end("data")->handOver({ std::string(number == 0 ? 900'000 : 1, 'x') }, "/work");
        ASSERT_TRUE(answer && answer->status == TWStatus::NothingRun) << number;
    }
    EXPECT_FALSE(listen(end("data"))) << "there is a window";
    patience = 10s;
    EXPECT_EQ(ask(end("data"), { "y" }).status, 7);
    EXPECT_EQ(carriedOut, std::vector<Lines>{ { "y" } });
}

TEST(TWLinuxPeerTest, TellsAnotherUsersProgram)
{
    int pair[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
    const TWDescriptor first(pair[0]);
    const TWDescriptor second(pair[1]);
    EXPECT_TRUE(TWLinuxPeerIsThisUser(first.get()));
    EXPECT_FALSE(TWLinuxPeerIsThisUser(STDIN_FILENO));
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    EXPECT_EQ(seteuid(12345), 0);
    EXPECT_FALSE(TWLinuxPeerIsThisUser(first.get()));
    EXPECT_EQ(seteuid(0), 0);
}
