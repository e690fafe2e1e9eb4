#include "app/TWResultsWindowController.h"

#include "fakes/TWFakeRunLoop.h"

using namespace std::chrono_literals;

namespace {

struct Recorder final : TWResultsView {
    void messagesRemoved() override { calls.push_back(-1); }
    void messagesAdded(std::size_t count) override { calls.push_back(static_cast<int>(count)); }
    std::vector<int> calls; // counts; -1 for an emptied list
};

}

TEST(TWResultsWindowControllerTest, LinesAreKeptAtOnceAndShownAtTheViewsPace)
{
    TWFakeRunLoop loop;
    Recorder view;
    TWResultsWindowController results(loop);
    results.setView(&view);
    for (int line = 0; line < 20'000; ++line) {
        results.addMessage("line", TWMessageType::Information);
        if (line % 1000 == 999)
            loop.advance(1ms);
    }
    EXPECT_EQ(results.messages().size(), 20'000U);
    loop.advance(1s);
    EXPECT_EQ(view.calls, (std::vector<int>{ 16'000, 20'000 }));
    results.addMessage("last", TWMessageType::Failure);
    results.flush();
    results.addMessage("gone", TWMessageType::Success);
    results.removeAllMessages();
    loop.advance(1s);
    EXPECT_EQ(view.calls, (std::vector<int>{ 16'000, 20'000, 20'001, -1 }));

    // Those of another thread come on a later turn, in their order.
    std::thread([&] {
        for (int line = 0; line < 100; ++line)
            results.addMessage(std::to_string(line), TWMessageType::Information);
    }).join();
    EXPECT_TRUE(results.messages().empty());
    loop.runUntilIdle();
    ASSERT_EQ(results.messages().size(), 100U);
    for (std::size_t line = 0; line < 100; ++line)
        EXPECT_EQ(results.messages()[line].text, std::to_string(line));
}
