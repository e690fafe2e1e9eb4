#pragma once

#include "builders/TWTemporaryFolder.h"
#include "platform/TWLock.h"

#include <gtest/gtest.h>

// What all locks promise. Body is one that can be made without arguments.
template <typename Body>
class TWLocksContract : public testing::Test {
protected:
    Body body_;
    TWTemporaryFolder root_;
};

TYPED_TEST_SUITE_P(TWLocksContract);

TYPED_TEST_P(TWLocksContract, ALockHasOneHolderUntilItGoes)
{
    TWLocks& locks = this->body_;
    const auto path = this->root_.path("lock");
    auto first = locks.tryLock(path);
    EXPECT_TRUE(first.lock && !first.heldByAnother && first.error == 0);
    const auto second = TWWaitForLock(locks, path, std::chrono::milliseconds(30));
    EXPECT_TRUE(!second.lock && second.heldByAnother);
    EXPECT_TRUE(locks.tryLock(this->root_.path("other")).lock);
    first.lock.reset();
    EXPECT_TRUE(TWWaitForLock(locks, path, std::chrono::milliseconds(0)).lock);
}

REGISTER_TYPED_TEST_SUITE_P(TWLocksContract, ALockHasOneHolderUntilItGoes);
