#pragma once

#include "platform/TWRunLoop.h"
#include "platform/posix/TWDescriptor.h"

#include <gtest/gtest.h>

#include <thread>

// What every run loop promises. Body is one that can be made without arguments.
template <typename Body>
class TWRunLoopContract : public testing::Test {
protected:
    using Handle = std::unique_ptr<TWRunLoopHandle>;

    Handle after(int milliseconds, std::function<void()> call)
    {
        return loop_.after(TWRunLoop::Duration(milliseconds), std::move(call));
    }
    void turnUntil(const std::function<bool()>& condition)
    {
        for (int turns = 0; !condition(); ++turns) {
            ASSERT_LT(turns, 5000) << "waited for nothing";
            loop_.turn(TWRunLoop::Duration(2));
        }
    }
    void turnForAWhile()
    {
        bool over = false;
        const auto timer = after(30, [&] { over = true; });
        turnUntil([&] { return over; });
    }

    Body body_;
    TWRunLoop& loop_ = body_;
};

TYPED_TEST_SUITE_P(TWRunLoopContract);

TYPED_TEST_P(TWRunLoopContract, TimersCallOnALaterTurnInOrderUntilTheirHandleIsDestroyed)
{
    std::string calls;
    const auto later = this->after(20, [&] { calls += 'c'; });
    const auto soon = this->after(1, [&] { calls += 'b'; });
    const auto atOnce = this->after(0, [&] { calls += 'a'; });
    this->after(0, [&] { calls += 'x'; }).reset();
    EXPECT_EQ(calls, "");
    this->turnForAWhile();
    EXPECT_EQ(calls, "abc");

    std::unique_ptr<TWRunLoopHandle> repeating = this->loop_.every(TWRunLoop::Duration(1), [&] {
        calls += 'r';
        if (calls == "abcrrr")
            repeating.reset(); // within its own call
    });
    this->turnForAWhile();
    EXPECT_EQ(calls, "abcrrr");
}

TYPED_TEST_P(TWRunLoopContract, PostedCallsComeLaterInOrderFromAnyThread)
{
    std::string calls;
    const auto mainThread = std::this_thread::get_id();
    const auto post = [&](char name) {
        this->loop_.post([&, name] { calls += std::this_thread::get_id() == mainThread ? name : '!'; });
    };
    post('a');
    std::thread([&] { post('b'); }).join();
    post('c');
    EXPECT_EQ(calls, "");
    this->turnUntil([&] { return calls.size() == 3; });
    EXPECT_EQ(calls, "abc");
}

TYPED_TEST_P(TWRunLoopContract, BackgroundWorkFinishesOnTheMainThreadUnlessNobodyWaits)
{
    std::atomic<int> worked = 0;
    std::thread::id finishedOn;
    const auto task
        = this->loop_.inBackground([&](const auto&) { ++worked; }, [&] { finishedOn = std::this_thread::get_id(); });
    EXPECT_EQ(finishedOn, std::thread::id());
    this->turnUntil([&] { return finishedOn != std::thread::id(); });
    EXPECT_TRUE(finishedOn == std::this_thread::get_id() && worked == 1);

    const auto untilCancelled = [&](const auto& cancellation) {
        while (!cancellation->cancelled())
            std::this_thread::yield();
        ++worked;
    };
    this->loop_.inBackground(untilCancelled, [] { ADD_FAILURE() << "nobody waited for it"; }).reset();
    this->turnUntil([&] { return worked == 2; });
    this->turnForAWhile();
}

TYPED_TEST_P(TWRunLoopContract, ADescriptorIsReportedWhileItCanBeRead)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const TWDescriptor readEnd(ends[0]);
    const TWDescriptor writeEnd(ends[1]);
    std::string received;
    std::unique_ptr<TWRunLoopHandle> watch = this->loop_.whenReadable(readEnd.get(), [&] {
        char byte = 0;
        EXPECT_EQ(read(readEnd.get(), &byte, 1), 1);
        received += byte;
        if (byte == 'c')
            watch.reset(); // within its own call
    });
    this->turnForAWhile();
    EXPECT_EQ(received, "");
    EXPECT_EQ(write(writeEnd.get(), "abcd", 4), 4);
    this->turnForAWhile();
    EXPECT_EQ(received, "abc");
}

REGISTER_TYPED_TEST_SUITE_P(TWRunLoopContract, TimersCallOnALaterTurnInOrderUntilTheirHandleIsDestroyed,
    PostedCallsComeLaterInOrderFromAnyThread, BackgroundWorkFinishesOnTheMainThreadUnlessNobodyWaits,
    ADescriptorIsReportedWhileItCanBeRead);
