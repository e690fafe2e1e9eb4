#include "cleaners/TWVolumesCleaner.h"

#include "fakes/TWRecordingCleanerDelegate.h"

namespace {

class TWVolumesCleanerTest : public TWCleanerTest<TWVolumesCleaner> {
protected:
    static constexpr auto Started = "started: Unmounting volumes...";
    static constexpr auto Success = "success: All volumes were unmounted.";
    static constexpr auto Failure = "failure: Some volumes could not be unmounted!";

    TWVolumesCleanerTest()
    {
        list = std::make_shared<std::vector<TWVolumesRecord>>();
        cleaner.setInfo({ list, {} });
        launcher.atLaunch = [this] {
            const auto path = "/" + launcher.records.back().substr(launcher.records.back().find("media"));
            if (!stuck.contains(path))
                volumes.unmount(path);
            // The editor's list follows the mount table in the middle of the job.
            std::erase_if(*list, [](const auto& record) { return !record.active; });
        };
    }
    void add(const std::string& name, bool active = true) const { list->push_back({ active, name, "/media/" + name }); }

    TWVolumesRecordList list;
    std::set<std::string> stuck; // stay mounted
};

TEST_F(TWVolumesCleanerTest, ActiveVolumesAreEjectedOneAfterAnotherAndTheMountTableDecides)
{
    for (const auto* name : { "idle", "one", "two", "three" })
        volumes.mount(std::string("/media/") + name);
    add("idle", false);
    add("one");
    add("gone");
    add("two");
    add("three");
    EXPECT_EQ(run(),
        (Lines{ Started, "- Unmounting one...", "- gone is already unmounted.", "- Unmounting two...",
            "- Unmounting three...", Success, "finished" }));
    EXPECT_EQ(launcher.records.size(), 3U);
    EXPECT_TRUE(launcher.records.front().starts_with(places.eject + " eject -force ")) << launcher.records.front();

    volumes.mount("/media/one");
    volumes.mount("/media/two");
    stuck = { "/media/one" };
    volumes.uses["/media/one"].holders = { "editor (12)" };
    EXPECT_EQ(run(),
        (Lines{ Started, "- Unmounting one...", "- Something is still mounted at \"/media/one\".",
            "- one is in use by editor (12).", "- gone is already unmounted.", "- Unmounting two...",
            "- three is already unmounted.", Failure, "finished" }));
    stuck.clear();
    volumes.uses["/media/one"].isInUse = true;
    EXPECT_EQ(
        run()[2], "- one is not shown any more, but its device is still in use by editor (12). Do not remove it yet.");
    EXPECT_TRUE(cleaner.outcome().text().ends_with("1 volume could not be unmounted.")) << cleaner.outcome().text();
    list->clear();
    EXPECT_EQ(run(), (Lines{ Started, Success, "finished" }));
}

TEST_F(TWVolumesCleanerTest, WhatIsNoOfferedVolumeOrAnotherOneByNowIsLeftAlone)
{
    volumes.hidden = { { "/media/system", "/dev/sda2", 1, 1 } };
    volumes.mount("/media/one");
    add("system");
    add("one");
    TWPlannedJob job;
    job.plan = std::make_shared<const TWPlan>(TWPlanOf(cleaner, runLoop));
    job.check = std::make_shared<TWPreviewCheck>();
    EXPECT_TRUE(job.plan->items[0].objection && !job.plan->items[1].objection);
    volumes.unmount("/media/one");
    volumes.mount("/media/one");
    cleaner.carryOut(job);
    runLoop.advance(1s);
    EXPECT_EQ(reports.take(),
        (Lines{ Started, "- system was left alone: it belongs to the system, or no file manager shows it.",
            "- one was left alone: another volume is mounted there by now.", Failure, "finished" }));
    // One turn of the loop after it was found.
    reports.onReport = [this] {
        if (reports.lines.back() == "- Unmounting one...") {
            volumes.unmount("/media/one");
            volumes.mount("/media/one");
        }
    };
    EXPECT_EQ(run()[3], "- one was left alone: another volume is mounted there by now.");
    list->clear();
    add("net/share");
    volumes.unknown = { "/media/net" };
    const auto silent = run();
    EXPECT_TRUE(silent[1].starts_with("- net/share was left alone: the service that shows it does not answer"));
    EXPECT_EQ(silent[2], Failure);
    volumes.readable = false;
    EXPECT_EQ(run(),
        (Lines{ Started, "- The mounted volumes could not be listed, so nobody knows which of them are there.", Failure,
            "finished" }));
    EXPECT_EQ(launcher.records, Lines());
    list->clear();
    EXPECT_EQ(run(), (Lines{ Started, Success, "finished" }));
}

TEST_F(TWVolumesCleanerTest, PassesOnWhyTheHelperHasFailedAndWhatMayBeLost)
{
    for (const auto* name : { "one", "two", "two/vault" }) {
        volumes.mount(std::string("/media/") + name);
        add(name);
    }
    stuck = { "/media/one" };
    launcher.failures["/media/one"].output
        = "eject: note: the drive\neject: UDisks2: not allowed\neject: umount: not root\n";
    launcher.failures["/media/two"].output = "eject: umount: busy\neject: warning: a file may be lost\n";
    EXPECT_EQ(run(),
        (Lines{ Started, "- Unmounting one...", "- one: UDisks2: not allowed", "- Unmounting two/vault...",
            "- Unmounting two...", "- two: a file may be lost", Failure, "finished" }));
    stuck.clear();
    launcher.failures["/media/one"] = { TWTermination::Kind::Exited, 3, "" };
    EXPECT_EQ(run()[2], "- one is not shown any more, but its device may still be in use. Do not remove it yet.");
    volumes.mount("/media/one");
    launcher.atLaunch = [] {};
    launcher.lasting = { places.eject };
    cleaner.clean();
    runLoop.advance(75s);
    EXPECT_EQ(reports.take()[2], "- one: it did not answer in time.");
    launcher.missing = { places.eject };
    EXPECT_TRUE(run()[2].starts_with("- one: \"/libexec/eject\" could not be started (")) << "missing";
}

TEST_F(TWVolumesCleanerTest, TakesAPathWithSuperfluousSlashesForTheSameVolume)
{
    TWDictionary record;
    record.set("Active", true);
    record.set("VolumePath", "//media/./one//");
    volumes.mount("/media/one");
    list->push_back(*TWVolumesRecord::from(record));
    EXPECT_EQ(run(), (Lines{ Started, "- Unmounting one...", Success, "finished" }));
}

TEST_F(TWVolumesCleanerTest, WaitsOnlyTwoSecondsForAVolumeThatDoesNotAnswer)
{
    volumes.mount("/media/one");
    volumes.uses["/media/one"].holders = { "player (7)" };
    add("one");
    bool isLate = true;
    volumes.atLook = [&] {
        if (std::exchange(isLate, false))
            runLoop.advance(3s); // the job ends meanwhile
    };
    EXPECT_EQ(run(), (Lines{ Started, "- Unmounting one...", Success, "finished" }));
    volumes.mount("/media/one");
    volumes.space["/media/one"] = 1000;
    const auto plan = TWPlanOf(cleaner, runLoop);
    EXPECT_EQ(plan.things[0]->details, "in use by player (7), 1.0 kB free, /dev/sdb1");
    // What a preview has shown as refused is no failure.
    TWPlannedJob job{ std::make_shared<const TWPlan>(), {}, 1, std::make_shared<TWPreviewCheck>(), "" };
    cleaner.carryOut(job);
    runLoop.advance(1s);
    EXPECT_EQ(reports.take()[1], "- 1 item stayed, because the preview showed it as refused.");
    EXPECT_EQ(cleaner.outcome().text(), "1 volume could not be unmounted.");
}

}
