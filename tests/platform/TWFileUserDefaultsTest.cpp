#include "platform/posix/TWFileUserDefaults.h"

#include "contracts/TWUserDefaultsContract.h"
#include "fakes/TWFakeMachine.h"

namespace {

struct Body : TWFakeMachine {
    TWUserDefaults& defaults() { return defaults_; }

private:
    TWFileUserDefaults defaults_{ ownFiles, runLoop, root.path("config/Tidewell.plist") };
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(File, TWUserDefaultsContract, Body);
