#include "platform/qt/TWQtRunLoop.h"

#include "builders/TWPrivateMounts.h"
#include "builders/TWQtApplication.h"
#include "builders/TWTemporaryFolder.h"
#include "contracts/TWRunLoopContract.h"
#include "platform/linux/TWLinuxMountWatch.h"

#include <QCoreApplication>
#include <QPointer>

namespace {

[[maybe_unused]] const auto* const Application
    = testing::AddGlobalTestEnvironment(new TWQtApplication<QCoreApplication>);

}

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, TWRunLoopContract, TWQtRunLoop);

// A command does nothing but turn the loop, for as long as its run takes.
TEST(TWQtRunLoopTest, TurningAloneFreesWhatIsLeftBehind)
{
    TWQtRunLoop loop;
    const QPointer<QObject> leftBehind = new QObject;
    loop.post([=] { leftBehind->deleteLater(); });
    for (int turns = 0; turns < 3; ++turns)
        loop.turn(TWRunLoop::Duration(100));
    EXPECT_FALSE(leftBehind);
}

TEST(TWQtRunLoopTest, ItsEndWaitsForBackgroundWorkAndIsSilent)
{
    std::atomic<bool> ended = false;
    {
        TWQtRunLoop loop;
        const auto task = loop.inBackground(
            [&](const auto& cancellation) {
                while (!cancellation->cancelled())
                    std::this_thread::yield();
                ended = true;
            },
            [] { ADD_FAILURE() << "the loop has ended"; });
        loop.post([] { ADD_FAILURE() << "the loop has ended"; });
    }
    EXPECT_TRUE(ended);
    QCoreApplication::processEvents();
}

TEST(TWQtRunLoopTest, SaysIfBackgroundWorkDoesNotEnd)
{
    TWQtRunLoop loop;
    std::atomic<bool> answers = false; // as a volume does
    const auto task = loop.inBackground(
        [&](const auto&) {
            while (!answers)
                std::this_thread::yield();
        },
        [] {});
    EXPECT_FALSE(loop.endBackgroundWork(TWRunLoop::Duration(10)));
    answers = true;
    EXPECT_TRUE(loop.endBackgroundWork(TWRunLoop::Duration(30'000)));
}

// The watch needs a descriptor inside another one, which a loop may look at in its own way.
TEST(TWQtRunLoopTest, TellsOfMountsAndRestsInBetween)
{
    if (!TWPrivateMounts::begin())
        GTEST_SKIP() << "nothing can be mounted here";
    const TWTemporaryFolder folder;
    TWQtRunLoop loop;
    int changes = 0;
    const TWLinuxMountWatch watch(loop, [&] { ++changes; });
    ASSERT_TRUE(TWPrivateMounts::mountEmpty(folder.path()));
    int turns = 0;
    for (const auto end = loop.now() + std::chrono::seconds(3); loop.now() < end; ++turns)
        loop.turn(TWRunLoop::Duration(100));
    EXPECT_EQ(changes, 1);
    EXPECT_LT(turns, 60);
    TWPrivateMounts::detach(folder.path());
}
