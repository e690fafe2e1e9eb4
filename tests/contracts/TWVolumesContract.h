#pragma once

#include "fakes/TWFakeRunLoop.h"
#include "platform/TWVolumes.h"

// What all bodies promise. A body has volumes() and, unless possible() is false, mounts and unmounts at path().
template <typename Body>
class TWVolumesContract : public testing::Test {
protected:
    void SetUp() override
    {
        if (!body.possible())
            GTEST_SKIP() << "nothing can be mounted here";
    }
    std::vector<std::string> shown()
    {
        std::vector<std::string> paths;
        const auto volumes = body.volumes().mountedVolumes();
        for (const auto& volume : volumes.value())
            paths.push_back(volume.path);
        return paths;
    }

    Body body;
};
TYPED_TEST_SUITE_P(TWVolumesContract);

TYPED_TEST_P(TWVolumesContract, ShowsTheTopmostOfWhatIsMountedOnOnePath)
{
    auto& machine = this->body;
    const auto one = machine.path("one");
    const auto two = machine.path("two \\040\n\xFF");
    EXPECT_EQ(this->shown(), std::vector<std::string>());
    machine.mount(one);
    machine.mount(two);
    const auto before = machine.volumes().mountsAt(one);
    machine.mount(one);
    EXPECT_EQ(this->shown(), (std::vector{ two, one }));
    const auto stacked = machine.volumes().mountsAt(one);
    ASSERT_EQ(stacked->size(), 2U);
    EXPECT_EQ((*stacked)[0], (*before)[0]);
    EXPECT_NE((*stacked)[1], (*before)[0]);
    EXPECT_EQ((*stacked)[1], (*machine.volumes().mountedVolumes())[1]);
    machine.unmount(one);
    EXPECT_EQ(machine.volumes().mountsAt(one), before);
    EXPECT_EQ(this->shown(), (std::vector{ one, two }));
    EXPECT_TRUE(machine.volumes().mountsAt(one + "/")->empty());
}

TYPED_TEST_P(TWVolumesContract, TellsOfChangesOnceASecond)
{
    auto& machine = this->body;
    TWFakeRunLoop runLoop;
    int changes = 0;
    auto watch = machine.volumes().watch(runLoop, [&] { ++changes; });
    const auto after = [&](int seconds) {
        runLoop.advance(std::chrono::seconds(seconds));
        return changes;
    };
    EXPECT_EQ(after(3), 0);
    machine.mount(machine.path("one"));
    runLoop.runUntilIdle();
    machine.mount(machine.path("two"));
    EXPECT_EQ(after(1), 1);
    EXPECT_EQ(after(3), 1);
    machine.unmount(machine.path("one"));
    EXPECT_EQ(after(1), 2);
    machine.unmount(machine.path("two"));
    runLoop.runUntilIdle();
    watch.reset();
    EXPECT_EQ(after(3), 2);
}

REGISTER_TYPED_TEST_SUITE_P(TWVolumesContract, ShowsTheTopmostOfWhatIsMountedOnOnePath, TellsOfChangesOnceASecond);
