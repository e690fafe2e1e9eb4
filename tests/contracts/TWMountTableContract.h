#pragma once

#include "platform/TWMountTable.h"

#include <gtest/gtest.h>

#include <algorithm>

// What every mount table promises. A body has table(), and mounts something with mountOne(), which returns the path.
template <typename Body>
class TWMountTableContract : public testing::Test {
protected:
    Body body;
};
TYPED_TEST_SUITE_P(TWMountTableContract);

TYPED_TEST_P(TWMountTableContract, StaysTheSameUntilSomethingIsMounted)
{
    auto& table = this->body.table();
    const auto before = table.mountPoints();
    EXPECT_TRUE(!before->empty() && std::is_sorted(before->begin(), before->end()));
    EXPECT_EQ(table.mountPoints(), before);
    const auto copy = *before;
    const std::string mounted = this->body.mountOne();
    if (mounted.empty())
        GTEST_SKIP() << "nothing can be mounted here";
    const auto after = table.mountPoints();
    EXPECT_TRUE(std::binary_search(after->begin(), after->end(), mounted));
    EXPECT_EQ(*before, copy) << "who holds the old list keeps it";
    EXPECT_EQ(table.mountPoints(), after);
}

REGISTER_TYPED_TEST_SUITE_P(TWMountTableContract, StaysTheSameUntilSomethingIsMounted);
