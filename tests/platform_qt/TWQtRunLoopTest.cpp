#include "platform/qt/TWQtRunLoop.h"

#include "builders/TWQtApplication.h"
#include "contracts/TWRunLoopContract.h"

#include <QCoreApplication>

namespace {

// Counts the objects that the event loop has freed.
struct FreedObjects final : QObject {
    int count = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::DeferredDelete;
        return false;
    }
};

[[maybe_unused]] const auto* const Application
    = testing::AddGlobalTestEnvironment(new TWQtApplication<QCoreApplication>);

}

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, TWRunLoopContract, TWQtRunLoop);

// A command does nothing but turn the loop, for as long as its run takes.
TEST(TWQtRunLoopTest, TurningAloneFreesWhatIsLeftBehind)
{
    FreedObjects freed;
    qApp->installEventFilter(&freed);
    TWQtRunLoop loop;
    int calls = 0;
    std::unique_ptr<TWRunLoopHandle> timer;
    std::function<void()> again = [&] {
        if (++calls < 100)
            timer = loop.after(TWRunLoop::Duration(0), again);
    };
    for (again(); calls < 100;)
        loop.turn(TWRunLoop::Duration(100));
    EXPECT_GE(freed.count, 90);
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
