#include "app/TWResultsWindowController.h"

#include "fakes/TWFakeRunLoop.h"

TEST(TWResultsWindowControllerTest, LinesOfAnotherThreadComeOnALaterTurnInTheirOrder)
{
    TWFakeRunLoop loop;
    TWResultsWindowController results(loop);
    std::thread([&] {
        for (int line = 0; line < 100; ++line)
            results.addMessage({ std::to_string(line), TWMessageType::Information });
    }).join();
    EXPECT_TRUE(results.messages().empty());
    loop.runUntilIdle();
    ASSERT_EQ(results.messages().size(), 100U);
    for (std::size_t line = 0; line < 100; ++line)
        EXPECT_EQ(results.messages()[line].text, std::to_string(line));
}
