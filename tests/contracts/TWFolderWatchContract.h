#pragma once

#include "fakes/TWFakeRunLoop.h"
#include "platform/TWFolderWatch.h"

#include <gtest/gtest.h>

// What every watch promises. A body has watcher(), root() with the folders "one" and "two", and change(), which makes
// an entry in a folder.
template <typename Body>
class TWFolderWatchContract : public testing::Test {
protected:
    void advance(int milliseconds) { runLoop.advance(TWRunLoop::Duration(milliseconds)); }

    TWFakeRunLoop runLoop;
    Body body;
};
TYPED_TEST_SUITE_P(TWFolderWatchContract);

TYPED_TEST_P(TWFolderWatchContract, GathersChangesForASecondUntilItIsDestroyed)
{
    const auto root = this->body.root();
    std::vector<TWFolderChanges> reports;
    auto watch = this->body.watcher().watch(this->runLoop, [&](const auto& changes) { reports.push_back(changes); });
    const auto folders = watch->folders();
    folders->setRoots({ root });
    for (const auto* name : { "", "/one", "/two" })
        folders->add(root + name);
    EXPECT_EQ(watch->problem(), "");
    for (const auto* name : { "/two", "/one", "/two" })
        this->body.change(root + name);
    this->advance(900);
    EXPECT_TRUE(reports.empty());
    this->body.change(root);
    this->advance(200);
    const std::vector<TWFolderChanges> first{ { false, { root, root + "/one", root + "/two" }, {} } };
    EXPECT_EQ(reports, first);
    folders->remove(root + "/one");
    this->body.change(root + "/one");
    this->advance(4000);
    EXPECT_EQ(reports, first);

    this->body.change(root);
    this->advance(500);
    watch.reset();
    folders->add(root + "/one");
    this->advance(10000);
    EXPECT_EQ(reports, first);
}

TYPED_TEST_P(TWFolderWatchContract, MayBeDestroyedInsideItsCall)
{
    std::unique_ptr<TWFolderWatch> watch;
    int calls = 0;
    watch = this->body.watcher().watch(this->runLoop, [&](const auto&) {
        watch.reset();
        ++calls;
    });
    watch->folders()->setRoots({ this->body.root() });
    watch->folders()->add(this->body.root());
    this->body.change(this->body.root());
    this->advance(10000);
    EXPECT_EQ(calls, 1);
}

REGISTER_TYPED_TEST_SUITE_P(
    TWFolderWatchContract, GathersChangesForASecondUntilItIsDestroyed, MayBeDestroyedInsideItsCall);
