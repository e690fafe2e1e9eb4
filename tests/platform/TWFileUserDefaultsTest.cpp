#include "platform/posix/TWFileUserDefaults.h"

#include "contracts/TWUserDefaultsContract.h"
#include "fakes/TWFakeMachine.h"

namespace {

using namespace std::chrono_literals;

struct Body : TWFakeMachine {
    TWUserDefaults& defaults() { return defaults_; }

private:
    TWFileUserDefaults defaults_{ ownFiles, runLoop, root.path("config/Tidewell.plist") };
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(File, TWUserDefaultsContract, Body);

TEST(TWFileUserDefaultsTest, ChangesAreWrittenByThemselvesOverWhatOthersWroteMeanwhile)
{
    TWFakeMachine machine;
    const auto file = machine.root.path("config/Tidewell.plist");
    TWFileUserDefaults ours(machine.ownFiles, machine.runLoop, file);
    TWFileUserDefaults theirs(machine.ownFiles, machine.runLoop, file);
    ours.setValue("ours", 1);
    theirs.setValue("theirs", 2);
    EXPECT_FALSE(machine.root.exists("config/Tidewell.plist"));
    machine.runLoop.turn(1000ms);
    const TWFileUserDefaults read(machine.ownFiles, machine.runLoop, file);
    EXPECT_EQ(read.value("ours"), TWValue(1));
    EXPECT_EQ(read.value("theirs"), TWValue(2));
}
