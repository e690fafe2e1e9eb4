#include "platform/posix/TWSocketHandover.h"

#include "fakes/TWFakeMachine.h"
#include "platform/linux/TWLinuxPeer.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <filesystem>
#include <future>

namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::string>;

bool isNobody(int)
{
    return false;
}

// A window in this thread; commands in threads of their own.
class TWSocketHandoverTest : public testing::Test, protected TWFakeMachine {
protected:
    std::unique_ptr<TWSocketHandover> end(
        const std::string& folder, const std::string& sandbox = "", bool (*peerIsThisUser)(int) = TWLinuxPeerIsThisUser)
    {
        std::filesystem::create_directories(root.path(folder));
        return std::make_unique<TWSocketHandover>(
            TWSocketHandover::Setup{ fileSystem, root.path(folder), sandbox, root.path("run"), peerIsThisUser });
    }
    bool listen(const std::unique_ptr<TWSocketHandover>& window)
    {
        return window->listen(runLoop, [this](const Words& words, const std::string& folder) {
            carriedOut.push_back(words);
            return TWCommandResult{ 7, "out " + folder, "err" };
        });
    }
    void turnUntil(const std::function<bool()>& condition)
    {
        for (int turns = 0; !condition(); ++turns) {
            ASSERT_LT(turns, 10'000) << "waited for nothing";
            runLoop.runUntilIdle(); // the clock stands still: who waits for a client hangs
            std::this_thread::sleep_for(1ms);
        }
    }
    using Answer = std::future<std::optional<TWCommandResult>>;

    Answer send(const std::unique_ptr<TWSocketHandover>& command, const Words& words)
    {
        return std::async(
            std::launch::async, [&command = *command, words] { return command.handOver(words, "/work"); });
    }
    std::optional<TWCommandResult> result(Answer answer)
    {
        turnUntil([&] { return answer.wait_for(0s) == std::future_status::ready; });
        return answer.get();
    }
    TWDescriptor connectTo(const std::string& path)
    {
        sockaddr_un address{ AF_UNIX, {} };
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        TWDescriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(connect(made.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0) << strerror(errno);
        return made;
    }
    static bool isClosed(const TWDescriptor& descriptor)
    {
        char byte;
        return recv(descriptor.get(), &byte, 1, MSG_DONTWAIT) == 0 || (errno != EAGAIN && errno != EWOULDBLOCK);
    }

    std::vector<Words> carriedOut;
    const std::string run = root.folder("run");
    const std::string socketPath = root.path("data/.window.socket");
};

}

TEST_F(TWSocketHandoverTest, WordsArriveAsTheSameBytesAndTheAnswerComesBack)
{
    auto window = end("data");
    const auto command = end("data");
    EXPECT_FALSE(command->handOver({ "x" }, "/")) << "nobody listens";
    ASSERT_TRUE(listen(window));
    const Words awkward{ "", "\xFF\n", std::string("nul\0nul", 7), "--json", std::string(300'000, 'x') };
    const auto answer = result(send(command, awkward));
    ASSERT_TRUE(answer);
    EXPECT_EQ(std::to_string(answer->status) + answer->out + answer->err, "7out /workerr");
    EXPECT_EQ(carriedOut, std::vector<Words>{ awkward });

    const auto tooLong = result(send(command, { std::string(2'000'000, 'x') }));
    EXPECT_EQ(tooLong ? tooLong->status : -1, TWStatus::NothingRun);
    EXPECT_EQ(carriedOut.size(), 1U);
    EXPECT_FALSE(listen(end("data"))) << "one window is there already";
}

TEST_F(TWSocketHandoverTest, BadClientsDisturbNobody)
{
    auto window = end("data");
    const auto command = end("data");
    ASSERT_TRUE(listen(window));
    const auto dripping = connectTo(socketPath);
    EXPECT_EQ(write(dripping.get(), "\0\1", 2), 2);
    auto leaving = connectTo(socketPath);
    EXPECT_EQ(write(leaving.get(), "\0\0\1\0some", 8), 8);
    const std::string_view broken[]
        = { "GET / HTTP/1.1", { "\0\0\0\5\0\0\0\2x", 9 }, { "\0\0\0\0", 4 }, { "\0\x10\0\1", 4 } };
    for (const auto garbage : broken) {
        const auto client = connectTo(socketPath);
        EXPECT_EQ(write(client.get(), garbage.data(), garbage.size()), garbage.size());
        turnUntil([&] { return isClosed(client); });
    }
    leaving.close();
    auto first = send(command, { "first" });
    auto second = send(command, { "second" });
    EXPECT_TRUE(result(std::move(second)));
    EXPECT_TRUE(result(std::move(first)));
    EXPECT_EQ(carriedOut.size(), 2U);
    // A byte now and then does not help: the whole message has to come in time.
    for (int seconds = 0; seconds < 6; ++seconds) {
        EXPECT_FALSE(isClosed(dripping)) << seconds;
        EXPECT_EQ(::send(dripping.get(), "\0", seconds < 2, MSG_NOSIGNAL), seconds < 2);
        runLoop.advance(seconds < 5 ? 999ms : 100ms);
    }
    EXPECT_TRUE(isClosed(dripping));
}

TEST_F(TWSocketHandoverTest, WordsStayInTheirWorld)
{
    auto window = end("data");
    ASSERT_TRUE(listen(window));
    std::filesystem::create_directories(root.path("box"));
    std::filesystem::create_hard_link(socketPath, root.path("box/.window.socket"));
    const auto boxed = end("box", root.path());
    const auto sameFolder = end("data", root.path());
    for (const auto* command : { &boxed, &sameFolder }) {
        const auto refused = result(send(*command, { "words", "add", "secret" }));
        ASSERT_TRUE(refused);
        EXPECT_EQ(refused->status, TWStatus::NothingRun);
        EXPECT_NE(refused->err.find(root.path("data")), std::string::npos) << refused->err;
    }
    EXPECT_TRUE(carriedOut.empty());
    // The folder has been replaced since the window began.
    std::filesystem::rename(root.path("data"), root.path("old"));
    std::filesystem::create_directories(root.path("data"));
    std::filesystem::create_hard_link(root.path("old/.window.socket"), socketPath);
    const auto command = end("data");
    EXPECT_TRUE(result(send(command, { "words" })));
    EXPECT_EQ(carriedOut.size(), 1U) << "both ends mean the new folder";
}

TEST_F(TWSocketHandoverTest, OnlyASocketThatNobodyElseCanHavePutThereIsUsed)
{
    {
        auto real = end("real");
        ASSERT_TRUE(listen(real));
        root.link("data/.window.socket", root.path("real/.window.socket"));
        EXPECT_FALSE(end("data")->handOver({ "x" }, "/")) << "a link is no socket";
        auto window = end("data");
        EXPECT_TRUE(listen(window)) << "in the runtime folder";
        const auto command = end("data");
        EXPECT_TRUE(result(send(command, { "x" })));
        chmod(run.c_str(), 0770);
        EXPECT_FALSE(end("data")->handOver({ "x" }, "/")) << "others could put another socket there";
        auto second = end("data");
        EXPECT_FALSE(listen(second));
    }
    EXPECT_TRUE(root.exists("data/.window.socket")) << "a link is nobody's socket to remove";
    EXPECT_FALSE(root.exists("real/.window.socket"));
    EXPECT_TRUE(std::filesystem::is_empty(run));
    carriedOut.clear();

    auto window = end("own");
    ASSERT_TRUE(listen(window));
    EXPECT_FALSE(end("own", "", isNobody)->handOver({ "x" }, "/")) << "another user listens";
    auto suspicious = end("other", "", isNobody);
    ASSERT_TRUE(listen(suspicious));
    const auto command = end("other");
    const auto lost = result(send(command, { "x" }));
    EXPECT_EQ(lost ? lost->status : -1, TWStatus::Failure) << "another user asks";
    EXPECT_TRUE(carriedOut.empty());
}

TEST_F(TWSocketHandoverTest, ADeadWindowLeavesTheWayFree)
{
    const auto dying = fork();
    if (dying == 0) {
        auto window = end("data");
        _exit(listen(window) ? 0 : 1);
    }
    int status = -1;
    waitpid(dying, &status, 0);
    ASSERT_EQ(status, 0);
    EXPECT_TRUE(root.exists("data/.window.socket"));
    EXPECT_FALSE(end("data")->handOver({ "x" }, "/"));
    auto window = end("data");
    ASSERT_TRUE(listen(window));
    const auto command = end("data");
    auto waiting = send(command, { "x" }); // connects, and nobody turns the loop
    EXPECT_EQ(waiting.wait_for(50ms), std::future_status::timeout);
    window.reset();
    const auto lost = result(std::move(waiting));
    EXPECT_EQ(lost ? lost->status : -1, TWStatus::Failure);
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
