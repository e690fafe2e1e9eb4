#include "platform/qt/TWQtRunLoop.h"

#include "contracts/TWRunLoopContract.h"

#include <QCoreApplication>

namespace {

// Counts the objects that the event loop has freed.
class FreedObjects final : public QObject {
public:
    FreedObjects() { qApp->installEventFilter(this); }
    int count = 0;

private:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::DeferredDelete;
        return false;
    }
};

class Application final : public testing::Environment {
public:
    void SetUp() override { application_ = std::make_unique<QCoreApplication>(argumentCount_, nullptr); }
    void TearDown() override { application_.reset(); }

private:
    int argumentCount_ = 0;
    std::unique_ptr<QCoreApplication> application_;
};

[[maybe_unused]] const auto* const Registered = testing::AddGlobalTestEnvironment(new Application);

}

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, TWRunLoopContract, TWQtRunLoop);

// A command does nothing but turn the loop, for as long as its run takes.
TEST(TWQtRunLoopTest, TurningAloneFreesWhatIsLeftBehind)
{
    FreedObjects freed;
    TWQtRunLoop loop;
    int calls = 0;
    std::unique_ptr<TWRunLoopHandle> timer;
    std::function<void()> again = [&] {
        if (++calls < 100)
            timer = loop.after(TWRunLoop::Duration(0), again);
    };
    again();
    while (calls < 100)
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
