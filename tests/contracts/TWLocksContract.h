#pragma once

#include "builders/TWTemporaryFolder.h"
#include "platform/TWLock.h"

#include <gtest/gtest.h>

// What all locks promise. Body is one that can be made without arguments.
template <typename Body>
class TWLocksContract : public testing::Test {
protected:
    Body body_;
    TWLocks& locks_ = body_;
    TWTemporaryFolder root_;
};

TYPED_TEST_SUITE_P(TWLocksContract);

TYPED_TEST_P(TWLocksContract, ALockHasOneHolderUntilItGoes)
{
    const auto path = this->root_.path("lock");
    auto first = this->locks_.tryLock(path);
    EXPECT_TRUE(first.lock && !first.heldByAnother && first.error == 0);
    const auto second = this->locks_.tryLock(path);
    EXPECT_TRUE(!second.lock && second.heldByAnother);
    EXPECT_TRUE(this->locks_.tryLock(this->root_.path("other")).lock);
    EXPECT_TRUE(TWWaitForLock(this->locks_, path, std::chrono::milliseconds(30)).heldByAnother);
    first.lock.reset();
    EXPECT_TRUE(TWWaitForLock(this->locks_, path, std::chrono::milliseconds(0)).lock);
}

REGISTER_TYPED_TEST_SUITE_P(TWLocksContract, ALockHasOneHolderUntilItGoes);
