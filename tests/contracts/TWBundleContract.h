#pragma once

#include "platform/TWBundle.h"

#include <gtest/gtest.h>

// What all bundles promise. Body has a bundle() of the version "1.0".
template <typename Body>
class TWBundleContract : public testing::Test {
protected:
    Body body_;
};

TYPED_TEST_SUITE_P(TWBundleContract);

TYPED_TEST_P(TWBundleContract, MissingKeysAreEmptyAndResourcesNeedNotExist)
{
    const TWBundle& bundle = this->body_.bundle();
    EXPECT_EQ(bundle.info("CFBundleVersion") + bundle.info("missing") + bundle.info(""), "1.0");
    EXPECT_EQ(bundle.identifier(), bundle.info("CFBundleIdentifier"));
    EXPECT_EQ(bundle.resourcePath("no such file"), bundle.resourcePath("") + "no such file");
}

REGISTER_TYPED_TEST_SUITE_P(TWBundleContract, MissingKeysAreEmptyAndResourcesNeedNotExist);
